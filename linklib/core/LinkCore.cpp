#include "linklib/LinkCore.h"

#include <algorithm>

#include "linklib/Checksum.h"

namespace tarnwick::wire {
namespace {

constexpr std::int32_t kOk = 1;
constexpr std::int32_t kFailed = 0;
constexpr std::int32_t kModeDirect = 1;
constexpr std::int32_t kModeHandControl = 2;

bool IsDevice(std::int32_t address) {
  return address > kMountAddress && address <= UINT8_MAX;
}

bool IsWord(std::int32_t index) {
  return index >= 0 && index <= kLastWord;
}

Bytes ReadPayload(std::int32_t first, std::int32_t count) {
  Bytes payload;
  Put16(payload, static_cast<std::uint16_t>(first));
  payload.push_back(static_cast<std::uint8_t>(count));
  return payload;
}

/// The words of a done answer to Read.
void TakeWords(const Answer& answer, std::int32_t* words) {
  for (std::size_t at = 1; at < answer.payload.size(); at += 2) *words++ = Get16(answer.payload, at);
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

void LinkCore::Close() {
  if (mLink) mLink->Close();
  mLink.reset();
  mFailure.clear();
  mAhead.Forget();
  mWritten.clear();
}

std::int32_t LinkCore::InitSerial(const std::string& name) {
  Close();
  if (name.empty()) return static_cast<std::int32_t>(Opening::Opened);
  std::error_code error;
  std::unique_ptr<serial::ILine> port = mOpener.Open(name, error);
  mTrace.Note(Trace::kPort, port ? "opened " + name : "cannot open " + name + ": " + error.message());
  if (!port) return Failed(Opening::CannotOpen, error);
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(mClock.Now());
  mLink.emplace(Session(std::move(port), mOpener, mClock, mTrace,
                        static_cast<std::uint8_t>(milliseconds.count() & 0xFF)));
  const Opening result = mLink->Open();
  if (result != Opening::Opened) return Failed(result, mLink->Cause());
  return static_cast<std::int32_t>(result);
}

std::int32_t LinkCore::Failed(Opening result, const std::error_code& error) {
  mFailure = CauseText(result);
  if (error) mFailure += ": " + error.message();
  mLink.reset();
  return static_cast<std::int32_t>(result);
}

std::string LinkCore::Note() const {
  std::string note;
  const std::error_code lost = mLink ? mLink->Cause() : std::error_code();
  if (!mFailure.empty()) note += "cause: " + mFailure + "\n";
  if (lost) note += "cause: the line went: " + lost.message() + "\n";
  if (mLink) {
    note += "speed: " + std::to_string(mLink->Speed()) + "\n";
    note += "repeats: " + std::to_string(mLink->Repeats()) + "\n";
  }
  return note;
}

std::int32_t LinkCore::SerialMode() const {
  if (!mLink) return 0;
  return mLink->Kind() == LinkKind::Direct ? kModeDirect : kModeHandControl;
}

void LinkCore::LockHandControl() {
  mAhead.Forget();
  if (SerialMode() == kModeHandControl) mLink->Lock();
}

std::int32_t LinkCore::TestForVirtualPort() const {
  return mLink && mLink->Kind() == LinkKind::VirtualPort ? 0 : 1;
}

std::int32_t LinkCore::TestForUpgradeSupport() const {
  return mLink && mLink->UpgradeSupported() ? 0 : 1;
}

Answer LinkCore::Ask(std::int32_t address, Command command, Bytes payload) {
  mAhead.Forget();
  if (!mLink || !IsDevice(address)) return {};
  return mLink->Ask(static_cast<std::uint8_t>(address), command, std::move(payload), mClock.Now());
}

/// Asks for a number of one or two bytes.
std::int32_t LinkCore::AskNumber(std::int32_t address, Command command, std::int32_t* out) {
  if (out == nullptr) return kFailed;
  const Answer answer = Ask(address, command);
  if (!answer.Done()) return kFailed;
  *out = answer.payload.size() == 1 ? answer.payload[0] : Get16(answer.payload, 0);
  return kOk;
}

std::int32_t LinkCore::AskPlain(std::int32_t address, Command command) {
  return Ask(address, command).Done() ? kOk : kFailed;
}

std::int32_t LinkCore::GetModel(std::int32_t address, std::int32_t* model) {
  return AskNumber(address, Command::Model, model);
}

std::int32_t LinkCore::GetRevision(std::int32_t address, std::int32_t* revision) {
  return AskNumber(address, Command::Revision, revision);
}

std::int32_t LinkCore::GetBootRevision(std::int32_t address, std::int32_t* revision) {
  return AskNumber(address, Command::BootRevision, revision);
}

std::int32_t LinkCore::GetBootVersion(std::int32_t address, std::int32_t* version) {
  return AskNumber(address, Command::BootVersion, version) == kOk ? 0 : -1;
}

std::int32_t LinkCore::GetState(std::int32_t address, std::int32_t* major, std::int32_t* minor) {
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

std::int32_t LinkCore::ReadMemory(std::int32_t address, std::int32_t first, std::int32_t last,
                                  std::int32_t* words) {
  if (words == nullptr || !IsWord(first) || !IsWord(last) || first > last) return kFailed;
  if (first == last) return ReadWord(address, first, words);
  while (first <= last) {
    const auto count = std::min(last - first + 1, static_cast<std::int32_t>(kMostWords));
    const Answer answer = Ask(address, Command::Read, ReadPayload(first, count));
    if (!answer.Done()) return kFailed;
    TakeWords(answer, words);
    words += count;
    first += count;
  }
  return kOk;
}

/// Reading ahead and, when that fails, reading the one word end within the limit of one question.
std::int32_t LinkCore::ReadWord(std::int32_t address, std::int32_t place, std::int32_t* word) {
  if (!mLink || !IsDevice(address)) return kFailed;
  const Duration asked = mClock.Now();
  if (const auto known = mAhead.Find(address, place, asked)) {
    *word = *known;
    return kOk;
  }
  const auto bus = static_cast<std::uint8_t>(address);
  const std::int32_t wanted = mAhead.Wanted(address, place);
  if (wanted > 1) {
    const Answer answer = mLink->Try(bus, Command::Read, ReadPayload(place, wanted), asked);
    if (answer.Done()) {
      std::vector<std::int32_t> words(static_cast<std::size_t>(wanted));
      TakeWords(answer, words.data());
      *word = words.front();
      mAhead.Keep(address, place, std::move(words), asked);
      return kOk;
    }
  }
  const Answer answer = mLink->Ask(bus, Command::Read, ReadPayload(place, 1), asked);
  mAhead.Note(address, place, wanted > 1);
  if (!answer.Done()) return kFailed;
  TakeWords(answer, word);
  return kOk;
}

std::int32_t LinkCore::EnterBoot(std::int32_t address) {
  return AskPlain(address, Command::Enter);
}

std::int32_t LinkCore::StartProgramming(std::int32_t address) {
  const Answer answer = Ask(address, Command::Start);
  // Also when no answer came: the device may have started all the same, with its memory erased. One that
  // refuses has erased nothing.
  if (answer.outcome != Outcome::Refused) mWritten.erase(address);
  return answer.Done() ? kOk : kFailed;
}

std::int32_t LinkCore::SendData(std::int32_t address, std::int32_t count, const std::int32_t* elements) {
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

std::int32_t LinkCore::EndProgramming(std::int32_t address) {
  if (!HoldsWhatWasSent(address)) return kFailed;
  const std::int32_t result = AskPlain(address, Command::End);
  if (result == kOk) mWritten.erase(address);
  return result;
}

bool LinkCore::HoldsWhatWasSent(std::int32_t address) {
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
