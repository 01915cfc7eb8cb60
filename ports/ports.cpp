#include "ports/ports.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <strings.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

namespace tarnwick::ports {
namespace {

namespace fs = std::filesystem;

/// 1 to `kLastPort`, or 0 for any name but COM1 to COM16.
int NumberOf(const std::string& name) {
  for (int n = 1; n <= kLastPort; ++n)
    if (::strcasecmp(name.c_str(), ("COM" + std::to_string(n)).c_str()) == 0) return n;
  return 0;
}

fs::path FixedDevice(int number) {
  if (number <= 4) return "/dev/ttyS" + std::to_string(number - 1);
  if (number <= 10) return "/dev/ttyUSB" + std::to_string(number - 5);
  return "/dev/ttyACM" + std::to_string(number - 11);
}

/// The system offers a fixed number of ttyS, whether there is a UART behind them or not. Where its
/// own listing may not be read, the driver is asked; opening without blocking or becoming the
/// controlling terminal sends nothing. True unless it is known that there is none.
bool HasHardware(const fs::path& device) {
  int type = PORT_UNKNOWN;
  if (std::ifstream(fs::path("/sys/class/tty") / device.filename() / "type") >> type)
    return type != PORT_UNKNOWN;
  const int fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return errno == EACCES || errno == EPERM || errno == EBUSY;
  serial_struct serial{};
  const bool answered = ::ioctl(fd, TIOCGSERIAL, &serial) == 0;
  ::close(fd);
  return answered && serial.type != PORT_UNKNOWN;
}

/// The device behind `name` with links followed, or an empty path when there is none.
fs::path Resolve(const fs::path& folder, const std::string& name) {
  const std::optional<fs::path> device = DeviceOf(folder, name);
  std::error_code error;
  return device ? fs::canonical(*device, error) : fs::path();
}

}  // namespace

std::optional<fs::path> DeviceOf(const fs::path& folder, const std::string& name) {
  const int number = NumberOf(name);
  if (number == 0) return std::nullopt;
  std::error_code error;
  for (fs::directory_iterator it(folder / "ports", error), end; !error && it != end; it.increment(error))
    if (::strcasecmp(it->path().filename().c_str(), name.c_str()) == 0) return it->path();
  return FixedDevice(number);
}

bool PortExists(const fs::path& folder, const std::string& name) {
  const fs::path device = Resolve(folder, name);
  std::error_code error;
  if (device.empty() || !fs::is_character_file(device, error)) return false;
  const bool onBoard = device.filename().string().starts_with("ttyS");
  return !onBoard || HasHardware(device);
}

std::string ProductOf(const fs::path& folder, const std::string& name) {
  const fs::path device = Resolve(folder, name);
  if (device.empty()) return {};
  // The USB device is one level above an ACM interface and two above a serial converter's port.
  const fs::path base = fs::path("/sys/class/tty") / device.filename() / "device";
  for (const char* up : {"../product", "../../product"}) {
    std::string product;
    if (!std::getline(std::ifstream(base / up), product)) continue;
    std::erase_if(product, [](char c) { return c < ' ' || c > '~'; });
    return product;
  }
  return {};
}

Access AccessTo(const fs::path& folder, const std::string& name) {
  const fs::path device = Resolve(folder, name);
  if (device.empty() || ::faccessat(AT_FDCWD, device.c_str(), R_OK | W_OK, AT_EACCESS) == 0) return {};
  Access access{.allowed = false, .group = {}};
  struct stat info {};
  constexpr mode_t kReadWrite = S_IRGRP | S_IWGRP;
  if (::stat(device.c_str(), &info) != 0 || (info.st_mode & kReadWrite) != kReadWrite) return access;
  if (const group* const owner = ::getgrgid(info.st_gid)) access.group = owner->gr_name;
  return access;
}

}  // namespace tarnwick::ports
