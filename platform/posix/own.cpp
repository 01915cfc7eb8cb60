// What the system knows of this process, of its time, and of its user's display.
#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "platform/clock.h"
#include "platform/program.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// What the system puts behind the name of a program whose file has gone.
constexpr std::string_view kGone = " (deleted)";

/// The running program's link; `gone` where its file no longer bears the name.
std::string RunningLink(bool& gone) {
  std::error_code error;
  std::string link = fs::read_symlink("/proc/self/exe", error).string();
  gone = link.ends_with(kGone) && !fs::exists(link, error);
  if (gone) link.resize(link.size() - kGone.size());
  return link;
}

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

/// Whether something answers at a socket.
bool Answers(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return true;  // Cannot be told.
  path.copy(address.sun_path, path.size());
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return true;
  const bool there = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return there;
}

}  // namespace

constinit const std::string_view program::kFileEnding = "";

fs::path program::RunningFile() {
  bool gone = false;
  return RunningLink(gone);
}

void program::OutliveTerminal() {
  for (const int number : {SIGHUP, SIGPIPE, SIGTTOU, SIGTTIN}) ::signal(number, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is the one that is closed.
    if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) < 0) return;
  }
}

bool program::IsReplaced() {
  bool gone = false;
  RunningLink(gone);
  return gone;
}

std::string program::System() {
  return TARNWICK_SYSTEM;
}

fs::path program::UserData() {
  const fs::path named = Environment("XDG_DATA_HOME");
  if (named.is_absolute()) return named;
  const fs::path home = Environment("HOME");
  return home.is_absolute() ? home / ".local" / "share" : fs::path();
}

bool program::HasDisplay() {
  const std::string platform = Environment("QT_QPA_PLATFORM");
  if (!platform.empty() && !platform.starts_with("xcb") && !platform.starts_with("wayland")) return true;
  const std::string wayland = Environment("WAYLAND_DISPLAY");
  if (!wayland.empty() && Answers((fs::path(Environment("XDG_RUNTIME_DIR")) / wayland).string())) return true;
  const std::string display = Environment("DISPLAY");
  if (!display.starts_with(':')) return !display.empty();  // One of another computer.
  return Answers("/tmp/.X11-unix/X" + display.substr(1, display.find('.') - 1));
}

std::string program::SystemText() {
  utsname system{};
  if (::uname(&system) != 0) return "an unknown system";
  return std::string(system.sysname) + " " + system.release + " " + system.machine;
}

std::optional<std::tm> clock::LocalTime(std::time_t moment) {
  std::tm local{};
  if (::localtime_r(&moment, &local) == nullptr) return std::nullopt;
  return local;
}

}  // namespace tarnwick
