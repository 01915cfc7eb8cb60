#include "mount/Terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tarnwick::mount {
namespace {

namespace fs = std::filesystem;

std::string LastError(const std::string& what) {
  return what + ": " + std::generic_category().message(errno);
}

bool MakeRaw(int fd) {
  termios settings{};
  if (::tcgetattr(fd, &settings) != 0) return false;
  ::cfmakeraw(&settings);
  ::cfsetspeed(&settings, B19200);
  return ::tcsetattr(fd, TCSANOW, &settings) == 0;
}

/// Puts a link to `target` at `link`; only another link is replaced.
std::error_code MakeLink(const std::string& target, const fs::path& link) {
  std::error_code error;
  if (fs::is_symlink(fs::symlink_status(link, error))) fs::remove(link, error);
  fs::create_symlink(target, link, error);
  return error;
}

}  // namespace

Terminal::~Terminal() {
  std::error_code error;
  if (!mLink.empty() && fs::read_symlink(mLink, error) == mPath) fs::remove(mLink, error);
  if (mSlave >= 0) ::close(mSlave);
  if (mMaster >= 0) ::close(mMaster);
}

bool Terminal::Open(const fs::path& link, std::string& error) {
  std::array<char, 64> name{};
  mMaster = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (mMaster < 0 || ::grantpt(mMaster) != 0 || ::unlockpt(mMaster) != 0 ||
      ::ptsname_r(mMaster, name.data(), name.size()) != 0) {
    error = LastError("no pseudo terminal");
    return false;
  }
  mPath = name.data();
  mSlave = ::open(mPath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (mSlave < 0 || !MakeRaw(mSlave)) {
    error = LastError(mPath);
    return false;
  }
  if (link.empty()) return true;
  if (const std::error_code failed = MakeLink(mPath, link)) {
    error = link.string() + ": " + failed.message();
    return false;
  }
  mLink = link;
  return true;
}

int Terminal::Speed() const {
  constexpr std::array<std::pair<speed_t, int>, 6> kRates = {
      {{B9600, 9600}, {B19200, 19200}, {B38400, 38400}, {B57600, 57600}, {B115200, 115200}, {B4800, 4800}}};
  termios settings{};
  if (::tcgetattr(mSlave, &settings) == 0)
    for (const auto& [rate, speed] : kRates)
      if (::cfgetospeed(&settings) == rate) return speed;
  return kRates.back().second;
}

wire::Bytes Terminal::Read() {
  wire::Bytes bytes(4096);
  const ssize_t count = ::read(mMaster, bytes.data(), bytes.size());
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

void Terminal::Write(wire::ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(mMaster, bytes.data(), bytes.size());
    if (count <= 0) return;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void Terminal::ClearStaleMark() {
  int marked = 0;
  if (::ioctl(mSlave, TIOCGEXCL, &marked) != 0 || marked == 0) return;
  if (::flock(mSlave, LOCK_EX | LOCK_NB) != 0) return;
  ::ioctl(mSlave, TIOCNXCL);
  ::flock(mSlave, LOCK_UN);
}

}  // namespace tarnwick::mount
