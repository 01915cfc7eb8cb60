// The names of serial ports, COM1 to COM16, and the devices behind them. The program and the link
// library use this one mapping.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tarnwick::ports {

/// Highest number of a listed port.
inline constexpr int kLastPort = 16;

/// The device that `name` stands for, there or not: an entry of that name in `folder`/ports, else the
/// fixed table COM1-COM4 /dev/ttyS0-3, COM5-COM10 /dev/ttyUSB0-5, COM11-COM16 /dev/ttyACM0-5. Nothing
/// for any other name. Names are compared without regard to case; `folder` is the program's folder.
std::optional<std::filesystem::path> DeviceOf(const std::filesystem::path& folder, const std::string& name);

/// True when the device behind `name` is there. No port is opened for use. A ttyS without hardware
/// behind it does not exist.
bool PortExists(const std::filesystem::path& folder, const std::string& name);

/// What the system knows of the product behind `name`, such as "USB-Serial Controller"; empty when
/// it knows nothing.
std::string ProductOf(const std::filesystem::path& folder, const std::string& name);

/// Whether the user of this process may open the device behind a name.
struct Access {
  bool allowed = true;  ///< True as well where there is no device.
  std::string group;    ///< Whose members may, where this user may not; empty when no group may.
};
Access AccessTo(const std::filesystem::path& folder, const std::string& name);

}  // namespace tarnwick::ports
