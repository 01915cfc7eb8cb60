// Which serial ports the system has, and what it knows of them.
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <vector>

#include "platform/serial.h"

namespace tarnwick::serial {
namespace {

namespace fs = std::filesystem;

/// The device with links followed, or an empty path when there is none.
fs::path Resolve(const fs::path& device) {
  std::error_code error;
  return fs::canonical(device, error);
}

/// The folder in which the system tells of the hardware behind a resolved device.
fs::path HardwareOf(const fs::path& resolved) {
  return fs::path("/sys/class/tty") / resolved.filename() / "device";
}

/// The system offers a fixed number of ttyS, whether there is a UART behind them or not. Where its
/// own listing may not be read, the driver is asked; opening without blocking or becoming the
/// controlling terminal sends nothing. True unless it is known that there is none.
bool HasHardware(const fs::path& resolved) {
  int type = PORT_UNKNOWN;
  if (std::ifstream(fs::path("/sys/class/tty") / resolved.filename() / "type") >> type)
    return type != PORT_UNKNOWN;
  const int fd = ::open(resolved.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return errno == EACCES || errno == EPERM || errno == EBUSY;
  serial_struct serial{};
  const bool answered = ::ioctl(fd, TIOCGSERIAL, &serial) == 0;
  ::close(fd);
  return answered && serial.type != PORT_UNKNOWN;
}

/// The first line of a file of the system's, without what is not to be shown; empty when there is none.
std::string LineOf(const fs::path& file) {
  std::string line;
  std::getline(std::ifstream(file), line);
  std::erase_if(line, [](char c) { return c < ' ' || c > '~'; });
  return line;
}

/// What the system tells of the terminal of that name as a USB adapter. The USB device is one level above an
/// ACM interface and two above a serial converter's port.
std::optional<Adapter> AdapterNamed(const std::string& name, const System& system) {
  std::error_code error;
  const fs::path port = fs::canonical(system.terminals / name / "device", error);
  if (error) return std::nullopt;
  for (fs::path interface : {port, port.parent_path()}) {
    const fs::path usb = interface.parent_path();
    const std::string maker = LineOf(usb / "idVendor");
    if (maker.empty()) continue;
    const std::string inner = interface.filename().string();
    return Adapter{
        .product = maker + ":" + LineOf(usb / "idProduct") + " " + LineOf(usb / "product"),
        .port = inner.substr(std::min(inner.find(':'), inner.size())) + "/" + LineOf(port / "port_number"),
        .serial = LineOf(usb / "serial"),
        .place = usb.filename().string()};
  }
  return std::nullopt;
}

/// Calls `visit` with the name and the adapter of each terminal of the system that is one.
template <class Visit>
void EachAdapter(const System& system, Visit&& visit) {
  std::error_code error;
  for (fs::directory_iterator it(system.terminals, error), end; !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename().string();
    if (const std::optional<Adapter> adapter = AdapterNamed(name, system)) visit(name, *adapter);
  }
}

/// True when the process described in `process` has `resolved` open.
bool Holds(const fs::path& process, const fs::path& resolved) {
  std::error_code error;
  for (fs::directory_iterator it(process / "fd", error), end; !error && it != end; it.increment(error)) {
    std::error_code gone;
    if (fs::read_symlink(it->path(), gone) == resolved) return true;
  }
  return false;
}

}  // namespace

/// Some makers give all their adapters one serial number, which then tells nothing.
std::optional<Adapter> AdapterOf(const fs::path& device, const System& system) {
  const fs::path resolved = Resolve(device);
  if (resolved.empty()) return std::nullopt;
  std::optional<Adapter> adapter = AdapterNamed(resolved.filename().string(), system);
  if (!adapter || adapter->serial.empty()) return adapter;
  bool shared = false;
  EachAdapter(system, [&](const std::string&, const Adapter& other) {
    shared = shared || (other.SameAs(*adapter) && other.place != adapter->place);
  });
  if (shared) adapter->serial.clear();
  return adapter;
}

fs::path FindAdapter(const Adapter& adapter, const System& system) {
  std::vector<std::string> found;
  EachAdapter(system, [&](const std::string& name, const Adapter& other) {
    if (adapter.SameAs(other)) found.push_back(name);
  });
  return found.size() == 1 ? system.devices / found.front() : fs::path();
}

fs::path StandardDevice(int number) {
  if (number <= 4) return "/dev/ttyS" + std::to_string(number - 1);
  if (number <= 10) return "/dev/ttyUSB" + std::to_string(number - 5);
  return "/dev/ttyACM" + std::to_string(number - 11);
}

bool IsPort(const fs::path& device) {
  const fs::path resolved = Resolve(device);
  std::error_code error;
  if (resolved.empty() || !fs::is_character_file(resolved, error)) return false;
  const bool onBoard = resolved.filename().string().starts_with("ttyS");
  return !onBoard || HasHardware(resolved);
}

std::string ProductOf(const fs::path& device) {
  const fs::path resolved = Resolve(device);
  if (resolved.empty()) return {};
  // The USB device is one level above an ACM interface and two above a serial converter's port.
  for (const char* up : {"../product", "../../product"}) {
    const std::string product = LineOf(HardwareOf(resolved) / up);
    if (!product.empty()) return product;
  }
  return {};
}

bool IsUsb(const fs::path& device) {
  const std::string name = Resolve(device).filename().string();
  return name.starts_with("ttyUSB") || name.starts_with("ttyACM");
}

std::string HolderOf(const fs::path& device) {
  const fs::path resolved = Resolve(device);
  if (resolved.empty()) return {};
  const std::string own = std::to_string(::getpid());
  std::error_code error;
  for (fs::directory_iterator it("/proc", error), end; !error && it != end; it.increment(error)) {
    const std::string process = it->path().filename().string();
    if (process.find_first_not_of("0123456789") != std::string::npos || process == own) continue;
    std::string name;
    if (Holds(it->path(), resolved) && std::getline(std::ifstream(it->path() / "comm"), name)) return name;
  }
  return {};
}

Access AccessTo(const fs::path& device) {
  const fs::path resolved = Resolve(device);
  if (resolved.empty() || ::faccessat(AT_FDCWD, resolved.c_str(), R_OK | W_OK, AT_EACCESS) == 0) return {};
  Access access{.allowed = false, .group = {}};
  struct stat info {};
  constexpr mode_t kReadWrite = S_IRGRP | S_IWGRP;
  if (::stat(resolved.c_str(), &info) != 0 || (info.st_mode & kReadWrite) != kReadWrite) return access;
  if (const group* const owner = ::getgrgid(info.st_gid)) access.group = owner->gr_name;
  return access;
}

}  // namespace tarnwick::serial
