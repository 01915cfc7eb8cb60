// A simulated mount with the link library's core before it, commanded and judged by the mount's
// own commands: in this process on virtual time, or over a real pseudo terminal.
#pragma once

#include "mount/Console.h"
#include "mount/MountProcess.h"
#include "support/TempFolder.h"
#include "support/VirtualLine.h"
#include "tarnwick/Library.h"
#include "tarnwick/SerialPort.h"

namespace tarnwick::campaign {

struct Rig {
  Rig(wire::IPortOpener& opener, wire::IClock& time) : clock(time), library(opener, time) {}
  virtual ~Rig() = default;
  /// All lines that the mount answers to a command.
  virtual std::string Ask(const std::string& command) = 0;

  wire::IClock& clock;
  wire::Library library;
};

/// A pulled cable is silence or, with `hangsUp`, the loss of the port until the cable is plugged in.
struct VirtualRig : private mount::Mount, private test::VirtualLine, public Rig {
  VirtualRig(int revision, bool hangsUp)
      : VirtualLine(static_cast<Mount&>(*this)),
        Rig(*this, *this),
        faults(*this, line, [=, this](const auto& told) {
          hungUp = hungUp || (hangsUp && told.starts_with("cable pulled"));
        }) {
    mount::DeviceSetup setup;
    setup.revision = revision;
    Put(16, setup);
  }
  std::string Ask(const std::string& command) override {
    hungUp = hungUp && command != "plug";
    return console.Execute(command);
  }

  mount::Faults faults;
  mount::Console console{*this, line, faults};
};

struct TerminalRig : private test::TempFolder,
                     private wire::SerialPortOpener,
                     private wire::SteadyClock,
                     public Rig {
  TerminalRig(const char* program, int revision) : SerialPortOpener(Path()), Rig(*this, *this) {
    process.Start(program, *this / "ports/COM5", {"--revision", std::to_string(revision)});
  }
  std::string Ask(const std::string& command) override { return process.Ask(command); }

  mount::MountProcess process;
};

}  // namespace tarnwick::campaign
