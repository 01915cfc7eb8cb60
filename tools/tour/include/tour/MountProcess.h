// The simulated mount as a child process, commanded over its standard input.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

namespace tarnwick::tour {

class MountProcess {
 public:
  ~MountProcess() { Stop(); }
  /// Starts the mount and waits until it is ready. False when it does not come up.
  bool Start(const QString& program, const QStringList& arguments);
  /// Ends the mount and takes its terminal away.
  void Stop();
  /// Switches the simulated power off and on.
  void CyclePower() { Ask(QStringLiteral("power")); }
  /// The cable comes off when so many more bytes have passed, counted both ways, and stays off until it is
  /// plugged in again.
  void PullCable(int afterBytes);
  void PlugCable() { Ask(QStringLiteral("plug")); }
  /// Puts a device into a state: running, boot, program or silent.
  void State(std::int32_t address, const char* state);
  /// Changes one word of a device's memory, given by its place in the package.
  void Poke(std::int32_t address, std::int32_t word, std::int32_t value);
  /// The device's memory in package order, a value a word; empty when the mount did not answer.
  std::vector<std::int32_t> Dump(std::int32_t address);

 private:
  /// Sends a command and gives the lines of its answer.
  QStringList Ask(const QString& command);

  QProcess mProcess;
};

}  // namespace tarnwick::tour
