#include "platform/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "posix.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

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

PseudoTerminal::~PseudoTerminal() {
  std::error_code error;
  if (!mLink.empty() && fs::read_symlink(mLink, error) == mPath) fs::remove(mLink, error);
  if (mSlave >= 0) ::close(mSlave);
  if (mMaster >= 0) ::close(mMaster);
}

std::error_code PseudoTerminal::Make() {
  std::array<char, 64> name{};
  mMaster = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (mMaster < 0 || ::grantpt(mMaster) != 0 || ::unlockpt(mMaster) != 0 ||
      ::ptsname_r(mMaster, name.data(), name.size()) != 0) {
    return posix::LastError();
  }
  mPath = name.data();
  mSlave = ::open(mPath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  return mSlave < 0 || !MakeRaw(mSlave) ? posix::LastError() : std::error_code();
}

std::error_code PseudoTerminal::Open(const fs::path& link, std::string& what) {
  what = "no pseudo terminal";
  if (const std::error_code error = Make()) return error;
  mWanted = link;
  what = link.string();
  return Appear();
}

std::error_code PseudoTerminal::Appear() {
  if (mWanted.empty()) return {};
  const std::error_code error = MakeLink(mPath, mWanted);
  if (!error) mLink = mWanted;
  return error;
}

/// The next one is made before this one goes, so that it has another name.
void PseudoTerminal::Vanish() {
  PseudoTerminal gone;
  std::swap(gone.mMaster, mMaster);
  std::swap(gone.mSlave, mSlave);
  std::swap(gone.mPath, mPath);
  std::swap(gone.mLink, mLink);
  Make();
}

int PseudoTerminal::Speed() const {
  constexpr std::array<std::pair<speed_t, int>, 9> kRates = {{{B9600, 9600},
                                                              {B19200, 19200},
                                                              {B38400, 38400},
                                                              {B57600, 57600},
                                                              {B115200, 115200},
                                                              {B230400, 230400},
                                                              {B460800, 460800},
                                                              {B921600, 921600},
                                                              {B4800, 4800}}};
  termios settings{};
  if (::tcgetattr(mSlave, &settings) == 0)
    for (const auto& [rate, speed] : kRates)
      if (::cfgetospeed(&settings) == rate) return speed;
  return kRates.back().second;
}

std::vector<std::uint8_t> PseudoTerminal::Read() {
  std::vector<std::uint8_t> bytes(4096);
  const ssize_t count = ::read(mMaster, bytes.data(), bytes.size());
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

void PseudoTerminal::Write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(mMaster, bytes.data(), bytes.size());
    if (count <= 0) return;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void PseudoTerminal::ClearStaleMark() {
  int marked = 0;
  if (::ioctl(mSlave, TIOCGEXCL, &marked) != 0 || marked == 0) return;
  if (::flock(mSlave, LOCK_EX | LOCK_NB) != 0) return;
  ::ioctl(mSlave, TIOCNXCL);
  ::flock(mSlave, LOCK_UN);
}

Attendant::Attendant(PseudoTerminal& terminal) : mTerminal(terminal) {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) ::sigaddset(&set, number);
  ::sigprocmask(SIG_BLOCK, &set, nullptr);
  // A reader that went away, or standard input of a terminal in the background, is no reason to end.
  for (const int number : {SIGPIPE, SIGTTIN, SIGTTOU}) ::signal(number, SIG_IGN);
  mSignals = ::signalfd(-1, &set, SFD_CLOEXEC);
  ::prctl(PR_SET_TIMERSLACK, 1UL);
}

Attendant::~Attendant() {
  ::close(mSignals);
}

Attendant::Arrival Attendant::Wait(std::chrono::microseconds limit) {
  std::array<pollfd, 3> sources = {
      {{mTerminal.mMaster, POLLIN, 0}, {mSignals, POLLIN, 0}, {mInputEnded ? -1 : STDIN_FILENO, POLLIN, 0}}};
  const timespec timeout{limit.count() / 1'000'000, limit.count() % 1'000'000 * 1000};
  if (limit.count() == 0) ::sched_yield();
  if (::ppoll(sources.data(), sources.size(), &timeout, nullptr) < 0) return {};
  return {(sources[0].revents & POLLIN) != 0, sources[1].revents != 0, sources[2].revents != 0};
}

bool Attendant::TakeInput(std::string& text) {
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  mInputEnded = count <= 0;
  if (!mInputEnded) text.append(buffer.data(), static_cast<std::size_t>(count));
  return !mInputEnded;
}

}  // namespace tarnwick
