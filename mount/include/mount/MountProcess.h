// The program tarnwick-mount as a child process, for who drives it: the tour, tests and benchmarks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process.h"

namespace tarnwick::mount {

/// Commands go to its standard input. It ends with its object, and with this process.
class MountProcess {
 public:
  MountProcess() = default;
  ~MountProcess() { Stop(); }
  MountProcess(const MountProcess&) = delete;
  MountProcess& operator=(const MountProcess&) = delete;

  /// Starts the program `program` with a terminal at `link`, whose folder is made, and waits until it is
  /// ready. False when it does not come up within five seconds.
  bool Start(const std::filesystem::path& program, const std::filesystem::path& link,
             std::vector<std::string> options);
  /// Ends it in order, so that it takes its terminal away. Its exit status; -1 when there was none.
  int Stop();

  /// Sends a command and gives its whole answer, each line ended by a line feed. Empty when the mount does
  /// not answer within five seconds.
  std::string Ask(const std::string& command);
  /// Switches the simulated power off and on.
  void CyclePower() { Ask("power"); }
  /// The cable comes off when so many more bytes have passed, counted both ways, and stays off until it is
  /// plugged in again.
  void PullCable(int afterBytes) { Ask("fault pull " + std::to_string(afterBytes)); }
  void PlugCable() { Ask("plug"); }
  /// Puts a device into a state: running, boot, program or silent.
  void State(std::int32_t address, std::string_view state);
  /// Changes one word of a device's memory, given by its place in the package.
  void Poke(std::int32_t address, std::int32_t word, std::int32_t value);
  /// The device's memory in package order, a value a word; empty when the mount did not answer.
  std::vector<std::int32_t> Dump(std::int32_t address);

  /// The terminal itself, to which the link leads. Empty before the start.
  const std::string& Device() const { return mDevice; }

 private:
  /// One line of its output with its line feed; empty when none comes.
  std::string Line();

  process::Child mChild;
  std::string mArrived;
  std::string mDevice;
};

}  // namespace tarnwick::mount
