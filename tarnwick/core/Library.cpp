#include "tarnwick/Library.h"

#include <algorithm>

#include "tarnwick/Checksum.h"

namespace tarnwick::wire {
namespace {

constexpr std::int32_t kOk = 1;
constexpr std::int32_t kFailed = 0;
constexpr std::int32_t kModeDirect = 1;
constexpr std::int32_t kModeHandControl = 2;
constexpr Duration kOpenLimit = std::chrono::seconds(3);

/// Results of opening a port.
enum Opening : std::int32_t {
  kOpened = 0,
  kCannotOpen = -1,
  kSilence = -2,
  kNoise = -3,
  kEcho = -4,
  kWrongAnswers = -5,
  kOtherProtocol = -6,
  kLineFailed = -7,
  kPoorLine = -8,
};

Opening CauseOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::Done:
      return kOpened;
    case Outcome::Silent:
      return kSilence;
    case Outcome::Noise:
      return kNoise;
    case Outcome::Echo:
      return kEcho;
    case Outcome::Gone:
      return kLineFailed;
    case Outcome::Refused:
    case Outcome::Foreign:
      break;
  }
  return kWrongAnswers;
}

bool IsWord(std::int32_t index) {
  return index >= 0 && index <= kLastWord;
}

std::optional<Command> WriteCommand(std::int32_t elements) {
  switch (elements) {
    case 4:
      return Command::Write1;
    case 6:
      return Command::Write2;
    case 10:
      return Command::Write4;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::int32_t Library::InitSerial(const std::string& name) {
  mSession.reset();
  mWritten.clear();
  mLockWanted = false;
  if (name.empty()) return kOpened;
  std::unique_ptr<ISerialPort> port = mOpener.Open(name);
  if (!port) return kCannotOpen;
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(mClock.Now());
  mSession.emplace(std::move(port), mClock, static_cast<std::uint8_t>(milliseconds.count() & 0xFF));
  const std::int32_t result = Identify();
  if (result != kOpened) mSession.reset();
  return result;
}

/// Asks twice: one answer may be chance on a line that is too poor to work with.
std::int32_t Library::Identify() {
  const Duration end = mClock.Now() + kOpenLimit;
  const Answer answer = mSession->Ask(kMountAddress, Command::Identify, {}, kOpenLimit);
  if (!answer.Done()) return CauseOf(answer.outcome);
  const Bytes& identity = answer.payload;
  if (!std::equal(std::begin(kMagic), std::end(kMagic), identity.begin())) return kWrongAnswers;
  if (identity[2] != kProtocol) return kOtherProtocol;
  mLinkKind = static_cast<LinkKind>(identity[3]);
  mUpgradeSupported = (identity[4] & kUpgradeSupported) != 0;
  const Answer again = mSession->Ask(kMountAddress, Command::Identify, {}, end - mClock.Now());
  if (again.outcome == Outcome::Gone) return kLineFailed;
  return again.Done() ? kOpened : kPoorLine;
}

std::int32_t Library::SerialMode() const {
  if (!mSession) return 0;
  return mLinkKind == LinkKind::Direct ? kModeDirect : kModeHandControl;
}

void Library::LockHandControl() {
  if (SerialMode() != kModeHandControl) return;
  mLockWanted = true;
  mSession->Ask(kMountAddress, Command::Lock);
}

std::int32_t Library::TestForVirtualPort() const {
  return mSession && mLinkKind == LinkKind::VirtualPort ? 0 : 1;
}

std::int32_t Library::TestForUpgradeSupport() const {
  return mSession && mUpgradeSupported ? 0 : 1;
}

/// One exchange with a device. A hand control that was locked once and has lost its lock, as by a
/// power cycle, is locked again.
Answer Library::Ask(std::int32_t address, Command command, Bytes payload) {
  if (!mSession || address <= kMountAddress || address > UINT8_MAX) return {};
  const auto bus = static_cast<std::uint8_t>(address);
  Answer answer = mSession->Ask(bus, command, payload);
  if (!answer.Refused(Reason::NotLocked) || !mLockWanted) return answer;
  if (!mSession->Ask(kMountAddress, Command::Lock).Done()) return answer;
  return mSession->Ask(bus, command, std::move(payload));
}

/// Asks for a number of one or two bytes.
std::int32_t Library::AskNumber(std::int32_t address, Command command, std::int32_t* out) {
  if (out == nullptr) return kFailed;
  const Answer answer = Ask(address, command);
  if (!answer.Done()) return kFailed;
  *out = answer.payload.size() == 1 ? answer.payload[0] : Get16(answer.payload, 0);
  return kOk;
}

std::int32_t Library::AskPlain(std::int32_t address, Command command) {
  return Ask(address, command).Done() ? kOk : kFailed;
}

std::int32_t Library::GetModel(std::int32_t address, std::int32_t* model) {
  return AskNumber(address, Command::Model, model);
}

std::int32_t Library::GetRevision(std::int32_t address, std::int32_t* revision) {
  return AskNumber(address, Command::Revision, revision);
}

std::int32_t Library::GetBootRevision(std::int32_t address, std::int32_t* revision) {
  return AskNumber(address, Command::BootRevision, revision);
}

std::int32_t Library::GetBootVersion(std::int32_t address, std::int32_t* version) {
  return AskNumber(address, Command::BootVersion, version) == kOk ? 0 : -1;
}

std::int32_t Library::GetState(std::int32_t address, std::int32_t* major, std::int32_t* minor) {
  constexpr std::int32_t kRunning = 1;
  if (major == nullptr || minor == nullptr) return kFailed;
  const Answer answer = Ask(address, Command::State);
  if (!answer.Done()) return kFailed;
  const std::int32_t state = answer.payload[0];
  if (state == kRunning) {
    *major = answer.payload[1];
    *minor = answer.payload[2];
  }
  return state;
}

std::int32_t Library::ReadMemory(std::int32_t address, std::int32_t first, std::int32_t last,
                                 std::int32_t* words) {
  if (words == nullptr || !IsWord(first) || !IsWord(last) || first > last) return kFailed;
  while (first <= last) {
    const auto count = static_cast<std::uint8_t>(std::min<std::int32_t>(last - first + 1, kMostWords));
    Bytes payload;
    Put16(payload, static_cast<std::uint16_t>(first));
    payload.push_back(count);
    const Answer answer = Ask(address, Command::Read, std::move(payload));
    if (!answer.Done()) return kFailed;
    for (std::size_t i = 0; i < count; ++i) *words++ = Get16(answer.payload, 1 + 2 * i);
    first += count;
  }
  return kOk;
}

std::int32_t Library::EnterBoot(std::int32_t address) {
  return AskPlain(address, Command::Enter);
}

std::int32_t Library::StartProgramming(std::int32_t address) {
  const std::int32_t result = AskPlain(address, Command::Start);
  if (result == kOk) mWritten[address].Clear();
  return result;
}

std::int32_t Library::SendData(std::int32_t address, std::int32_t count, const std::int32_t* elements) {
  const std::optional<Command> command = WriteCommand(count);
  if (!command || elements == nullptr) return kFailed;
  Bytes payload;
  for (std::int32_t i = 0; i < count; ++i) {
    if (elements[i] < 0 || elements[i] > UINT8_MAX) return kFailed;
    payload.push_back(static_cast<std::uint8_t>(elements[i]));
  }
  const std::int32_t first = Get16(payload, 0);
  const std::int32_t words = count / 2 - 1;
  if (!IsWord(first + words - 1)) return kFailed;
  if (!Ask(address, *command, payload).Done()) return kFailed;
  WrittenImage& written = mWritten[address];
  for (std::int32_t i = 0; i < words; ++i) {
    const std::size_t at = 2 + 2 * static_cast<std::size_t>(i);
    written.Note(first + i, static_cast<std::uint16_t>(payload[at + 1] << 8 | payload[at]));
  }
  return kOk;
}

std::int32_t Library::EndProgramming(std::int32_t address) {
  if (!HoldsWhatWasSent(address)) return kFailed;
  const std::int32_t result = AskPlain(address, Command::End);
  if (result == kOk) mWritten.erase(address);
  return result;
}

bool Library::HoldsWhatWasSent(std::int32_t address) {
  const auto written = mWritten.find(address);
  if (written == mWritten.end()) return true;
  return written->second.EachRun([&](std::uint16_t first, ByteView bytes) {
    Bytes range;
    Put16(range, first);
    Put16(range, static_cast<std::uint16_t>(first + bytes.size() / 2 - 1));
    const Answer answer = Ask(address, Command::Check, std::move(range));
    if (!answer.Done()) return false;
    const std::uint32_t held =
        static_cast<std::uint32_t>(Get16(answer.payload, 0)) << 16 | Get16(answer.payload, 2);
    return held == Crc32(bytes);
  });
}

}  // namespace tarnwick::wire
