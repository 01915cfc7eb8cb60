#include "linklib/Frame.h"

#include <algorithm>
#include <array>

#include "linklib/Checksum.h"

namespace tarnwick::wire {
namespace {

constexpr std::size_t kCommands = 0x40;
constexpr std::uint8_t kCommandMask = 0x3F;

constexpr Kind KindOf(std::uint8_t head) {
  return static_cast<Kind>(head & ~kCommandMask);
}

/// Payload lengths of a command.
struct Shape {
  bool known = false;
  std::size_t request = 0;
  std::size_t done = 0;
};

constexpr std::array<Shape, kCommands> kShapes = [] {
  std::array<Shape, kCommands> shapes{};
  const auto set = [&shapes](Command command, std::size_t request, std::size_t done) {
    shapes[static_cast<std::size_t>(command)] = {true, request, done};
  };
  set(Command::Identify, 0, 6);
  set(Command::Lock, 0, 0);
  set(Command::Speed, 1, 1);
  set(Command::Times, 0, 3);
  set(Command::State, 0, 3);
  set(Command::Model, 0, 2);
  set(Command::Revision, 0, 1);
  set(Command::BootRevision, 0, 1);
  set(Command::BootVersion, 0, 1);
  set(Command::Enter, 0, 0);
  set(Command::Start, 0, 0);
  set(Command::End, 0, 0);
  set(Command::Check, 4, 4);
  set(Command::Read, 3, 1);  // and two for each word
  set(Command::Write1, 4, 0);
  set(Command::Write2, 6, 0);
  set(Command::Write4, 10, 0);
  return shapes;
}();

std::uint8_t HeadOf(Kind kind, Command command) {
  return static_cast<std::uint8_t>(static_cast<unsigned>(kind) | static_cast<unsigned>(command));
}

/// The codes of the short forms are those of the Write commands and so much.
constexpr unsigned kShortCode = 3;

/// The Write command that a short frame with this head stands for.
std::optional<Command> ShortCommand(std::uint8_t head) {
  const unsigned code = head & unsigned{kCommandMask};
  const auto command = static_cast<Command>(code - kShortCode);
  if (code < kShortCode || !IsWrite(command) || kShapes[code].known) return std::nullopt;
  return command;
}

/// All of a short frame that is checked: what is known, then what is sent of it.
Bytes Checked(const Known& known, ByteView sent) {
  Bytes bytes{known.sequence, known.address};
  Put16(bytes, known.first);
  bytes.insert(bytes.end(), sent.begin(), sent.end());
  return bytes;
}

Bytes EncodeShort(const Frame& frame) {
  const unsigned head = HeadOf(frame.kind, frame.command) + kShortCode;
  const bool request = frame.kind == Kind::Request;
  Bytes bytes{static_cast<std::uint8_t>(head)};
  bytes.insert(bytes.end(), frame.payload.begin() + (request ? 2 : 0), frame.payload.end());
  const Bytes checked = Checked({frame.sequence, frame.address, *frame.brief}, bytes);
  if (!request) {
    Put16(bytes, Crc16(checked));
    return bytes;
  }
  const std::uint32_t crc = Crc32(checked);
  Put16(bytes, static_cast<std::uint16_t>(crc >> 16));
  Put16(bytes, static_cast<std::uint16_t>(crc & 0xFFFF));
  return bytes;
}

/// A short frame of that block, by trying what it would look like.
Scan ScanShort(ByteView bytes, Frame& frame, std::size_t& length, std::span<const Known> known) {
  const std::optional<Command> command = ShortCommand(bytes[0]);
  const Kind kind = KindOf(bytes[0]);
  if (!command || known.empty() || (kind != Kind::Request && kind != Kind::Done && kind != Kind::Refused))
    return Scan::None;
  const bool request = kind == Kind::Request;
  std::size_t payload = kind == Kind::Refused ? 1 : 0;
  if (request) payload = kShapes[static_cast<std::size_t>(*command)].request - 2;
  const std::size_t whole = 1 + payload + (request ? kShortCrcLength : kCrcLength);
  if (bytes.size() < whole) return Scan::Partial;
  for (const Known& block : known) {
    Frame found{kind, *command, block.sequence, block.address, {}, block.first};
    if (request) Put16(found.payload, block.first);
    found.payload.insert(found.payload.end(), bytes.begin() + 1,
                         bytes.begin() + 1 + static_cast<std::ptrdiff_t>(payload));
    if (!std::ranges::equal(EncodeShort(found), bytes.first(whole))) continue;
    frame = std::move(found);
    length = whole;
    return Scan::Whole;
  }
  return Scan::None;
}

}  // namespace

bool IsWrite(Command command) {
  return command == Command::Write1 || command == Command::Write2 || command == Command::Write4;
}

Known KnownOf(const Frame& write) {
  return {write.sequence, write.address, Get16(write.payload, 0)};
}

Known FollowerOf(const Frame& write) {
  const std::size_t words = write.payload.size() / 2 - 1;
  return {static_cast<std::uint8_t>(write.sequence + 1), write.address,
          static_cast<std::uint16_t>(Get16(write.payload, 0) + words)};
}

std::uint8_t SpeedCode(int speed) {
  return static_cast<std::uint8_t>(std::ranges::find(kSpeeds, speed) - kSpeeds.begin());
}

Bytes Encode(const Frame& frame) {
  if (frame.brief) return EncodeShort(frame);
  Bytes bytes{HeadOf(frame.kind, frame.command), frame.sequence, frame.address};
  bytes.reserve(kHeaderLength + frame.payload.size() + kCrcLength);
  bytes.insert(bytes.end(), frame.payload.begin(), frame.payload.end());
  Put16(bytes, Crc16(bytes));
  return bytes;
}

std::optional<std::size_t> PayloadLength(std::uint8_t head, std::optional<std::uint8_t> first) {
  const Shape& shape = kShapes[head & kCommandMask];
  if (!shape.known) return std::nullopt;
  switch (KindOf(head)) {
    case Kind::Request:
      return shape.request;
    case Kind::Refused:
      return 1;
    case Kind::Done:
      break;
    default:
      return std::nullopt;
  }
  const bool counted = static_cast<Command>(head & kCommandMask) == Command::Read;
  if (!counted || !first) return shape.done;
  if (*first == 0 || *first > kMostWords) return std::nullopt;
  return shape.done + std::size_t{2} * *first;
}

std::size_t AnswerLength(const Frame& request) {
  std::optional<std::uint8_t> first;
  if (request.command == Command::Read && request.payload.size() == 3) first = request.payload[2];
  return kHeaderLength + kCrcLength + PayloadLength(HeadOf(Kind::Done, request.command), first).value_or(0);
}

Scan ScanFrame(ByteView bytes, Frame& frame, std::size_t& length, std::span<const Known> known) {
  if (bytes.empty()) return Scan::Partial;
  if (ShortCommand(bytes[0])) return ScanShort(bytes, frame, length, known);
  std::optional<std::uint8_t> first;
  if (bytes.size() > kHeaderLength) first = bytes[kHeaderLength];
  const std::optional<std::size_t> payload = PayloadLength(bytes[0], first);
  if (!payload) return Scan::None;
  const std::size_t checked = kHeaderLength + *payload;
  if (bytes.size() < checked + kCrcLength) return Scan::Partial;
  if (Crc16(bytes.first(checked)) != Get16(bytes, checked)) return Scan::None;
  frame.kind = KindOf(bytes[0]);
  frame.command = static_cast<Command>(bytes[0] & kCommandMask);
  frame.sequence = bytes[1];
  frame.address = bytes[2];
  frame.brief.reset();
  frame.payload.assign(bytes.begin() + kHeaderLength, bytes.begin() + static_cast<std::ptrdiff_t>(checked));
  length = checked + kCrcLength;
  return Scan::Whole;
}

std::optional<Frame> RequestReader::Next() {
  std::size_t at = 0;
  std::optional<Frame> found;
  while (at < mBytes.size() && !found) {
    Frame frame;
    std::size_t length = 0;
    const bool request = KindOf(mBytes[at]) == Kind::Request;
    const Scan scan = request ? ScanFrame(ByteView(mBytes).subspan(at), frame, length, mKnown) : Scan::None;
    if (scan == Scan::Partial) break;
    at += scan == Scan::Whole ? length : 1;
    if (scan == Scan::Whole) found = std::move(frame);
  }
  mBytes.erase(mBytes.begin(), mBytes.begin() + static_cast<std::ptrdiff_t>(at));
  return found;
}

void RequestReader::GiveUp() {
  if (!mBytes.empty()) mBytes.erase(mBytes.begin());
}

}  // namespace tarnwick::wire
