#include "tarnwick/SerialPort.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "ports/ports.h"
#include "tarnwick/Frame.h"

namespace tarnwick::wire {
namespace {

/// A line that is open, locked and raw; gives all of that back at its end.
class SerialPort : public ISerialPort {
 public:
  explicit SerialPort(int fd) : mFd(fd) {}
  ~SerialPort() override {
    if (mChanged) ::tcsetattr(mFd, TCSANOW, &mBefore);
    if (mLocked) ::ioctl(mFd, TIOCNXCL);
    ::close(mFd);
  }
  SerialPort(const SerialPort&) = delete;
  SerialPort& operator=(const SerialPort&) = delete;

  /// The lock holds root off as well, which the terminal's own flag does not.
  bool Claim() {
    mLocked = ::flock(mFd, LOCK_EX | LOCK_NB) == 0 && ::ioctl(mFd, TIOCEXCL) == 0;
    return mLocked;
  }

  bool MakeRaw() {
    if (::tcgetattr(mFd, &mBefore) != 0) return false;
    termios raw = mBefore;
    ::cfmakeraw(&raw);
    raw.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    raw.c_cflag |= CLOCAL | CREAD;
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    ::cfsetspeed(&raw, B19200);
    mChanged = ::tcsetattr(mFd, TCSANOW, &raw) == 0;
    ::tcflush(mFd, TCIOFLUSH);
    return mChanged;
  }

  bool Speed(int speed) override;
  bool Write(std::span<const std::uint8_t> bytes, Duration limit) override;
  int Read(std::span<std::uint8_t> buffer, Duration limit) override;

 private:
  bool Await(short events, Duration limit) const;

  int mFd;
  bool mLocked = false;
  bool mChanged = false;
  termios mBefore{};
};

/// True when `events` came within `limit`; an interruption by a signal counts as nothing yet.
bool SerialPort::Await(short events, Duration limit) const {
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(limit);
  const timespec timeout{whole.count(), std::chrono::nanoseconds(limit - whole).count()};
  pollfd line{mFd, events, 0};
  return ::ppoll(&line, 1, &timeout, nullptr) > 0;
}

/// An adapter may take other settings than it was told: the speed counts only when it stands there.
bool SerialPort::Speed(int speed) {
  constexpr std::array<speed_t, kSpeeds.size()> kRates = {B9600, B19200, B57600, B115200};
  const std::size_t code = SpeedCode(speed);
  termios settings{};
  if (code == kRates.size() || ::tcgetattr(mFd, &settings) != 0) return false;
  ::cfsetspeed(&settings, kRates[code]);
  return ::tcsetattr(mFd, TCSANOW, &settings) == 0 && ::tcgetattr(mFd, &settings) == 0 &&
         ::cfgetospeed(&settings) == kRates[code];
}

bool SerialPort::Write(std::span<const std::uint8_t> bytes, Duration limit) {
  SteadyClock clock;
  const Duration end = clock.Now() + limit;
  while (!bytes.empty()) {
    const ssize_t count = ::write(mFd, bytes.data(), bytes.size());
    if (count > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
      continue;
    }
    if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
    const Duration left = end - clock.Now();
    if (left <= Duration::zero()) return false;
    Await(POLLOUT, left);
  }
  return true;
}

int SerialPort::Read(std::span<std::uint8_t> buffer, Duration limit) {
  if (!Await(POLLIN, std::max(limit, Duration::zero()))) return 0;
  const ssize_t count = ::read(mFd, buffer.data(), buffer.size());
  if (count > 0) return static_cast<int>(count);
  // Readable, yet nothing to read: the other end has hung up.
  return count < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : -1;
}

}  // namespace

std::unique_ptr<ISerialPort> SerialPortOpener::Open(const std::string& name) {
  const auto device = ports::DeviceOf(mFolder, name);
  if (!device) return nullptr;
  // Without blocking, since a line without carrier would hold the opening up.
  const int fd = ::open(device->c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return nullptr;
  auto port = std::make_unique<SerialPort>(fd);
  if (::isatty(fd) == 0 || !port->Claim() || !port->MakeRaw()) return nullptr;
  return port;
}

Duration SteadyClock::Now() {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace tarnwick::wire
