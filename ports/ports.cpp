#include "ports/ports.h"

#include "platform/serial.h"
#include "platform/text.h"

namespace tarnwick::ports {
namespace {

namespace fs = std::filesystem;

/// 1 to `kLastPort`, or 0 for any name but COM1 to COM16.
int NumberOf(const std::string& name) {
  for (int n = 1; n <= kLastPort; ++n)
    if (text::EqualNoCase(name, "COM" + std::to_string(n))) return n;
  return 0;
}

}  // namespace

std::optional<fs::path> DeviceOf(const fs::path& folder, const std::string& name) {
  if (name.starts_with('/')) return name;
  const int number = NumberOf(name);
  if (number == 0) return std::nullopt;
  std::error_code error;
  for (fs::directory_iterator it(folder / "ports", error), end; !error && it != end; it.increment(error))
    if (text::EqualNoCase(it->path().filename().string(), name)) return it->path();
  return serial::StandardDevice(number);
}

bool PortExists(const fs::path& folder, const std::string& name) {
  const std::optional<fs::path> device = DeviceOf(folder, name);
  return device && serial::IsPort(*device);
}

}  // namespace tarnwick::ports
