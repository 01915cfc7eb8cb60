// A serial line by the system's communications devices.
#include "platform/serial.h"

#include <algorithm>
#include <chrono>

#include "win32.h"

namespace tarnwick::serial {
namespace {

using win32::Handle;
using win32::LastError;

/// Waits of the system are of whole milliseconds; a shorter one becomes one.
DWORD Milliseconds(Duration limit) {
  const auto whole = std::chrono::ceil<std::chrono::milliseconds>(std::max(limit, Duration(1))).count();
  return static_cast<DWORD>(std::min<std::int64_t>(whole, MAXDWORD - 1));
}

/// A line that is open and set; gives what it found there back at its end. Nobody else can open it meanwhile.
class CommLine final : public ILine {
 public:
  explicit CommLine(Handle line) : mLine(std::move(line)) {}
  ~CommLine() override {
    if (mChanged) ::SetCommState(mLine.Get(), &mBefore);
    if (mTimed) ::SetCommTimeouts(mLine.Get(), &mTimesBefore);
  }
  CommLine(const CommLine&) = delete;
  CommLine& operator=(const CommLine&) = delete;

  std::error_code Prepare(int speed);
  std::error_code Speed(int speed) override;
  std::error_code Write(std::span<const std::uint8_t> bytes, Duration limit) override;
  std::size_t Read(std::span<std::uint8_t> buffer, Duration limit, std::error_code& error) override;

 private:
  std::error_code Wait(DWORD reading, DWORD writing);
  std::error_code Waiting(std::size_t& count);
  std::size_t Take(std::span<std::uint8_t> buffer, std::error_code& error);

  Handle mLine;
  bool mChanged = false;
  bool mTimed = false;
  DCB mBefore{};
  COMMTIMEOUTS mTimesBefore{};
  COMMTIMEOUTS mTimes{};  ///< As they are set.
};

std::error_code CommLine::Prepare(int speed) {
  mBefore.DCBlength = sizeof mBefore;
  if (::GetCommState(mLine.Get(), &mBefore) == 0 || ::GetCommTimeouts(mLine.Get(), &mTimesBefore) == 0)
    return std::make_error_code(std::errc::inappropriate_io_control_operation);
  DCB raw = mBefore;
  raw.BaudRate = static_cast<DWORD>(speed);
  raw.ByteSize = 8;
  raw.Parity = NOPARITY;
  raw.StopBits = ONESTOPBIT;
  raw.fBinary = TRUE;
  raw.fParity = raw.fOutxCtsFlow = raw.fOutxDsrFlow = raw.fDsrSensitivity = FALSE;
  raw.fOutX = raw.fInX = raw.fErrorChar = raw.fNull = raw.fAbortOnError = FALSE;
  raw.fDtrControl = DTR_CONTROL_ENABLE;
  raw.fRtsControl = RTS_CONTROL_ENABLE;
  if (::SetCommState(mLine.Get(), &raw) == 0) return LastError();
  mChanged = true;
  if (const std::error_code error = Wait(1, 1)) return error;
  ::PurgeComm(mLine.Get(), PURGE_RXCLEAR | PURGE_TXCLEAR);
  return {};
}

/// Sets how long a read waits for the first byte, and a write for the last.
std::error_code CommLine::Wait(DWORD reading, DWORD writing) {
  if (mTimed && mTimes.ReadTotalTimeoutConstant == reading && mTimes.WriteTotalTimeoutConstant == writing)
    return {};
  mTimes = {.ReadIntervalTimeout = 0,
            .ReadTotalTimeoutMultiplier = 0,
            .ReadTotalTimeoutConstant = reading,
            .WriteTotalTimeoutMultiplier = 0,
            .WriteTotalTimeoutConstant = writing};
  if (::SetCommTimeouts(mLine.Get(), &mTimes) == 0) return LastError();
  mTimed = true;
  return {};
}

/// A driver may take another speed than it was told: the speed counts only when it stands there. What it took in
/// its place is undone.
std::error_code CommLine::Speed(int speed) {
  DCB before{};
  before.DCBlength = sizeof before;
  if (::GetCommState(mLine.Get(), &before) == 0) return LastError();
  DCB settings = before;
  settings.BaudRate = static_cast<DWORD>(speed);
  std::error_code error;
  if (::SetCommState(mLine.Get(), &settings) == 0 || ::GetCommState(mLine.Get(), &settings) == 0)
    error = LastError();
  if (!error && settings.BaudRate != static_cast<DWORD>(speed))
    error = std::make_error_code(std::errc::not_supported);
  if (error) ::SetCommState(mLine.Get(), &before);
  return error;
}

std::error_code CommLine::Write(std::span<const std::uint8_t> bytes, Duration limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!bytes.empty()) {
    const auto left = std::chrono::duration_cast<Duration>(end - std::chrono::steady_clock::now());
    if (left <= Duration::zero()) return std::make_error_code(std::errc::timed_out);
    if (const std::error_code error = Wait(mTimes.ReadTotalTimeoutConstant, Milliseconds(left))) return error;
    DWORD count = 0;
    if (::WriteFile(mLine.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) == 0)
      return LastError();
    bytes = bytes.subspan(count);
  }
  return {};
}

/// How many bytes wait to be read. An error when the line is gone.
std::error_code CommLine::Waiting(std::size_t& count) {
  DWORD faults = 0;
  COMSTAT state{};
  if (::ClearCommError(mLine.Get(), &faults, &state) == 0) return LastError();
  count = state.cbInQue;
  return {};
}

std::size_t CommLine::Take(std::span<std::uint8_t> buffer, std::error_code& error) {
  DWORD count = 0;
  if (::ReadFile(mLine.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) == 0)
    error = LastError();
  return count;
}

/// A read waits until it has all that it asked for: so it asks for what is there, or else for one byte.
std::size_t CommLine::Read(std::span<std::uint8_t> buffer, Duration limit, std::error_code& error) {
  std::size_t there = 0;
  error = Waiting(there);
  std::size_t count = 0;
  if (!error && there == 0 && limit > Duration::zero() && !buffer.empty()) {
    error = Wait(Milliseconds(limit), mTimes.WriteTotalTimeoutConstant);
    if (!error) count = Take(buffer.first(1), error);
    if (!error && count > 0) error = Waiting(there);
  }
  if (!error && there > 0 && count < buffer.size())
    count += Take(buffer.subspan(count, std::min(there, buffer.size() - count)), error);
  // What came before the line went is handed on, and the loss is told by the next call.
  if (count > 0) error.clear();
  return count;
}

}  // namespace

/// One that another program has open is refused as if nobody might open it.
std::unique_ptr<ILine> Open(const std::filesystem::path& device, int speed, std::error_code& error, const System&) {
  error.clear();
  const std::wstring name = L"\\\\.\\" + device.filename().native();
  Handle line(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!line) {
    error = LastError();
    if (error.value() == ERROR_ACCESS_DENIED || error.value() == ERROR_SHARING_VIOLATION)
      error = std::make_error_code(std::errc::device_or_resource_busy);
    return nullptr;
  }
  auto opened = std::make_unique<CommLine>(std::move(line));
  error = opened->Prepare(speed);
  if (error) return nullptr;
  return opened;
}

}  // namespace tarnwick::serial
