// What the link library needs of the world round it, beside a line of bytes: ports by name, and time. The
// real ones are below; tests and campaigns put virtual ones in their place.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "platform/serial.h"

namespace tarnwick::wire {

using serial::Duration;

class IPortOpener {
 public:
  virtual ~IPortOpener() = default;
  /// Opens the port of that name raw, at the base speed, with nothing waiting in it. Null, and the cause in
  /// `error`, when it cannot be opened.
  virtual std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) = 0;
};

class IClock {
 public:
  virtual ~IClock() = default;
  /// Time since some fixed moment; never goes back.
  virtual Duration Now() = 0;
};

/// Opens serial devices by their port names.
class PortOpener : public IPortOpener {
 public:
  /// `folder` is the one whose `ports/` entries come first.
  explicit PortOpener(std::filesystem::path folder) : mFolder(std::move(folder)) {}
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override;

 private:
  std::filesystem::path mFolder;
};

class SteadyClock : public IClock {
 public:
  Duration Now() override;
};

}  // namespace tarnwick::wire
