// The real serial line and the real clock.
#pragma once

#include <filesystem>

#include "tarnwick/ISerialPort.h"

namespace tarnwick::wire {

/// Opens serial devices by their port names.
class SerialPortOpener : public IPortOpener {
 public:
  /// `folder` is the one whose `ports/` entries come first.
  explicit SerialPortOpener(std::filesystem::path folder) : mFolder(std::move(folder)) {}
  std::unique_ptr<ISerialPort> Open(const std::string& name) override;

 private:
  std::filesystem::path mFolder;
};

class SteadyClock : public IClock {
 public:
  Duration Now() override;
};

}  // namespace tarnwick::wire
