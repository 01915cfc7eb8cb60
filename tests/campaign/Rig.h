// A simulated mount with the link library's core before it, commanded and judged by the mount's
// own commands: in this process on virtual time, or over a real pseudo terminal.
#pragma once

#include <thread>

#include "mount/Console.h"
#include "support/MountProcess.h"
#include "support/VirtualLine.h"
#include "tarnwick/Library.h"
#include "tarnwick/SerialPort.h"

namespace tarnwick::campaign {

struct Rig {
  virtual ~Rig() = default;
  /// The answer to a command of the mount, all its lines.
  virtual std::string Ask(const std::string& command) = 0;
  virtual wire::Library& Library() = 0;
  virtual wire::Duration Now() = 0;
  virtual void Rest(wire::Duration time) = 0;
  /// From now on, a pulled cable hangs the line up, until `Ask("plug")`.
  virtual void HangUpWhenPulled() {}
};

class VirtualRig : public Rig {
 public:
  explicit VirtualRig(int revision) {
    mount::DeviceSetup setup;
    setup.revision = revision;
    mMount.Put(16, setup);
  }
  std::string Ask(const std::string& command) override {
    mLine.hungUp = mLine.hungUp && command != "plug";
    return mConsole.Execute(command);
  }
  wire::Library& Library() override { return mLibrary; }
  wire::Duration Now() override { return mLine.Now(); }
  void Rest(wire::Duration time) override { mLine.Pass(time); }
  void HangUpWhenPulled() override { mHangsUp = true; }

 private:
  void Hear(const std::string& told) {
    if (mHangsUp && told.starts_with("cable pulled")) mLine.hungUp = true;
  }

  bool mHangsUp = false;
  mount::Mount mMount;
  test::VirtualLine mLine{mMount};
  mount::Faults mFaults{mMount, mLine.line, [this](const std::string& told) { Hear(told); }};
  mount::Console mConsole{mMount, mLine.line, mFaults};
  wire::Library mLibrary{mLine, mLine};
};

class TerminalRig : public Rig {
 public:
  explicit TerminalRig(const char* program, int revision)
      : mProcess(program, mFolder, std::to_string(revision)) {}
  std::string Ask(const std::string& command) override {
    std::string answer = mProcess.Ask(command) + "\n";
    if (command.starts_with("dump") || command.starts_with("state"))
      while (!answer.ends_with("end\n")) answer += mProcess.Line() + "\n";
    return answer;
  }
  wire::Library& Library() override { return mLibrary; }
  wire::Duration Now() override { return mClock.Now(); }
  void Rest(wire::Duration time) override { std::this_thread::sleep_for(time); }

 private:
  test::TempFolder mFolder;
  test::MountProcess mProcess;
  wire::SerialPortOpener mOpener{mFolder.Path()};
  wire::SteadyClock mClock;
  wire::Library mLibrary{mOpener, mClock};
};

}  // namespace tarnwick::campaign
