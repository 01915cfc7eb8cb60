// What the link library needs of the world round it, beside a line of bytes: ports by name, and time. The
// real ones are below; tests and campaigns put virtual ones in their place.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
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
  /// Opens, in the same way, the adapter that was opened last, under whatever name it has by now, and never
  /// another one. Null, and the cause in `error`, while it is not there.
  virtual std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) = 0;
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
  /// `folder` is the one whose `ports/` entries come first; `system` is where devices are looked for.
  explicit PortOpener(std::filesystem::path folder, serial::System system = {})
      : mFolder(std::move(folder)), mSystem(std::move(system)) {}
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override;
  /// A device that hangs on no USB is the same when it has the same name.
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override;

 private:
  std::filesystem::path mFolder;
  serial::System mSystem;
  std::filesystem::path mDevice;            ///< Opened last; empty when it cannot be told from others.
  std::optional<serial::Adapter> mAdapter;  ///< What the system told of it.
};

class SteadyClock : public IClock {
 public:
  Duration Now() override;
};

}  // namespace tarnwick::wire
