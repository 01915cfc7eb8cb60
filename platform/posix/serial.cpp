// A serial line by the system's terminals.
#include "platform/serial.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "posix.h"

namespace tarnwick::serial {
namespace {

constexpr std::array<std::pair<int, speed_t>, 7> kRates = {{{9600, B9600},
                                                            {19200, B19200},
                                                            {57600, B57600},
                                                            {115200, B115200},
                                                            {230400, B230400},
                                                            {460800, B460800},
                                                            {921600, B921600}}};

constexpr auto kLowLatency = static_cast<int>(ASYNC_LOW_LATENCY);

/// The system's code for a speed; none for a speed that it has none for.
std::optional<speed_t> RateOf(int speed) {
  for (const auto& [known, rate] : kRates)
    if (known == speed) return rate;
  return std::nullopt;
}

Duration Now() {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
}

/// A line that is open, locked and raw; gives all of that back at its end.
class TerminalLine final : public ILine {
 public:
  TerminalLine(int fd, std::filesystem::path timer) : mFd(fd), mTimer(std::move(timer)) {}
  ~TerminalLine() override {
    HoldBackAgain();
    if (mChanged) ::tcsetattr(mFd, TCSANOW, &mBefore);
    if (mLocked) ::ioctl(mFd, TIOCNXCL);
    ::close(mFd);
  }
  TerminalLine(const TerminalLine&) = delete;
  TerminalLine& operator=(const TerminalLine&) = delete;

  std::error_code Prepare(int speed);
  std::error_code Speed(int speed) override;
  std::error_code Write(std::span<const std::uint8_t> bytes, Duration limit) override;
  std::size_t Read(std::span<std::uint8_t> buffer, Duration limit, std::error_code& error) override;

 private:
  std::error_code Claim();
  std::error_code MakeRaw(int speed);
  void HandOnAtOnce();
  void HoldBackAgain();
  bool Await(short events, Duration limit) const;

  int mFd;
  bool mLocked = false;
  bool mChanged = false;
  termios mBefore{};
  std::filesystem::path mTimer;  ///< The file of the driver's that tells how long it holds bytes back.
  std::string mHeldBack;         ///< What stood there before it was changed.
  bool mHurried = false;         ///< The driver was asked by its flag, which was not set before.
};

std::error_code TerminalLine::Prepare(int speed) {
  if (::isatty(mFd) == 0) return posix::LastError();
  if (const std::error_code error = Claim()) return error;
  if (const std::error_code error = MakeRaw(speed)) return error;
  HandOnAtOnce();
  return {};
}

/// Most USB adapters hold what comes in back for 16 ms, to hand more on at once. Asked by the flag that most
/// drivers know, else by the driver's own file; what can do neither is no worse than before.
void TerminalLine::HandOnAtOnce() {
  serial_struct driver{};
  if (::ioctl(mFd, TIOCGSERIAL, &driver) == 0) {
    if ((driver.flags & kLowLatency) != 0) return;
    driver.flags |= kLowLatency;
    mHurried = ::ioctl(mFd, TIOCSSERIAL, &driver) == 0;
    if (mHurried) return;
  }
  std::string before;
  if (!std::getline(std::ifstream(mTimer), before) || before == "1") return;
  if (std::ofstream(mTimer) << "1" << std::flush) mHeldBack = before;
}

void TerminalLine::HoldBackAgain() {
  serial_struct driver{};
  if (mHurried && ::ioctl(mFd, TIOCGSERIAL, &driver) == 0) {
    driver.flags &= ~kLowLatency;
    ::ioctl(mFd, TIOCSSERIAL, &driver);
  }
  if (!mHeldBack.empty()) std::ofstream(mTimer) << mHeldBack;
}

/// The lock holds root off as well, which the terminal's own flag does not.
std::error_code TerminalLine::Claim() {
  if (::flock(mFd, LOCK_EX | LOCK_NB) != 0) return std::make_error_code(std::errc::device_or_resource_busy);
  if (::ioctl(mFd, TIOCEXCL) != 0) return posix::LastError();
  mLocked = true;
  return {};
}

std::error_code TerminalLine::MakeRaw(int speed) {
  const std::optional<speed_t> rate = RateOf(speed);
  if (!rate) return std::make_error_code(std::errc::invalid_argument);
  if (::tcgetattr(mFd, &mBefore) != 0) return posix::LastError();
  termios raw = mBefore;
  ::cfmakeraw(&raw);
  raw.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY | INPCK);
  raw.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
  raw.c_cflag |= CLOCAL | CREAD;
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 0;
  ::cfsetspeed(&raw, *rate);
  if (::tcsetattr(mFd, TCSANOW, &raw) != 0) return posix::LastError();
  mChanged = true;
  ::tcflush(mFd, TCIOFLUSH);
  return {};
}

/// True when `events` came within `limit`; an interruption by a signal counts as nothing yet.
bool TerminalLine::Await(short events, Duration limit) const {
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(limit);
  const timespec timeout{whole.count(), std::chrono::nanoseconds(limit - whole).count()};
  pollfd line{mFd, events, 0};
  return ::ppoll(&line, 1, &timeout, nullptr) > 0;
}

/// An adapter may take other settings than it was told: the speed counts only when it stands there. What it
/// took in its place is undone.
std::error_code TerminalLine::Speed(int speed) {
  const std::optional<speed_t> rate = RateOf(speed);
  if (!rate) return std::make_error_code(std::errc::invalid_argument);
  termios before{};
  if (::tcgetattr(mFd, &before) != 0) return posix::LastError();
  termios settings = before;
  ::cfsetspeed(&settings, *rate);
  std::error_code error;
  if (::tcsetattr(mFd, TCSANOW, &settings) != 0 || ::tcgetattr(mFd, &settings) != 0)
    error = posix::LastError();
  if (!error && (::cfgetospeed(&settings) != *rate || ::cfgetispeed(&settings) != *rate))
    error = std::make_error_code(std::errc::not_supported);
  if (error) ::tcsetattr(mFd, TCSANOW, &before);
  return error;
}

std::error_code TerminalLine::Write(std::span<const std::uint8_t> bytes, Duration limit) {
  const Duration end = Now() + limit;
  while (!bytes.empty()) {
    const ssize_t count = ::write(mFd, bytes.data(), bytes.size());
    if (count > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
      continue;
    }
    if (count < 0 && errno != EAGAIN && errno != EINTR) return posix::LastError();
    const Duration left = end - Now();
    if (left <= Duration::zero()) return std::make_error_code(std::errc::timed_out);
    Await(POLLOUT, left);
  }
  return {};
}

std::size_t TerminalLine::Read(std::span<std::uint8_t> buffer, Duration limit, std::error_code& error) {
  error.clear();
  if (!Await(POLLIN, std::max(limit, Duration::zero()))) return 0;
  const ssize_t count = ::read(mFd, buffer.data(), buffer.size());
  if (count > 0) return static_cast<std::size_t>(count);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return 0;
  // Readable, yet nothing to read: the other end has hung up.
  error = count < 0 ? posix::LastError() : std::make_error_code(std::errc::connection_reset);
  return 0;
}

}  // namespace

std::unique_ptr<ILine> Open(const std::filesystem::path& device, int speed, std::error_code& error,
                            const System& system) {
  error.clear();
  // Without blocking, since a line without carrier would hold the opening up.
  const int fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    error = posix::LastError();
    return nullptr;
  }
  std::error_code unknown;
  const std::filesystem::path name = std::filesystem::canonical(device, unknown).filename();
  auto line = std::make_unique<TerminalLine>(fd, system.terminals / name / "device/latency_timer");
  error = line->Prepare(speed);
  if (error) return nullptr;
  return line;
}

}  // namespace tarnwick::serial
