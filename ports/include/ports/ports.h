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
/// system's own device of that number (`serial::StandardDevice`). A name that begins with "/" is the path of a
/// device, which none of the list bears. Nothing for any other name. Names are compared without regard to
/// case; `folder` is the program's folder.
std::optional<std::filesystem::path> DeviceOf(const std::filesystem::path& folder, const std::string& name);

/// True when there is a serial port behind `name`. No port is opened for use.
bool PortExists(const std::filesystem::path& folder, const std::string& name);

}  // namespace tarnwick::ports
