// The frames of the link protocol, as docs/link-protocol.md lays them down. Both ends share this
// codec and nothing else.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace tarnwick::wire {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

enum class Kind : std::uint8_t { Done = 0x40, Request = 0x80, Refused = 0xC0 };

enum class Command : std::uint8_t {
  Identify = 0x01,
  Lock = 0x02,
  Speed = 0x03,
  Times = 0x04,
  State = 0x08,
  Model = 0x09,
  Revision = 0x0A,
  BootRevision = 0x0B,
  BootVersion = 0x0C,
  Enter = 0x10,
  Start = 0x11,
  End = 0x12,
  Check = 0x13,
  Read = 0x14,
  Write1 = 0x15,
  Write2 = 0x16,
  Write4 = 0x17,
};

/// Why a request was refused: the payload of a refusal.
enum class Reason : std::uint8_t { WrongState = 1, OutOfRange = 2, Busy = 3, NotTaken = 4, NotLocked = 5 };

/// What stands behind the port: in the answer to Identify.
enum class LinkKind : std::uint8_t { Direct = 0, HandControl = 1, VirtualPort = 2 };

/// The mount itself; all other addresses are devices on its bus.
inline constexpr std::uint8_t kMountAddress = 0;
/// Bits in the flags of the answer to Identify.
inline constexpr std::uint8_t kUpgradeSupported = 0x01;
inline constexpr std::uint8_t kLocked = 0x02;
inline constexpr std::uint8_t kTakesShort = 0x04;
inline constexpr std::uint8_t kTellsTimes = 0x08;
/// First bytes of the answer to Identify, and the version of the protocol told here.
inline constexpr std::uint8_t kMagic[2] = {'T', 'W'};
inline constexpr std::uint8_t kProtocol = 1;

inline constexpr std::size_t kHeaderLength = 3;  ///< Head, sequence number, address.
inline constexpr std::size_t kCrcLength = 2;
inline constexpr std::size_t kMostWords = 64;      ///< Words in one answer to Read.
inline constexpr std::size_t kShortCrcLength = 4;  ///< Of a short request; a short answer has `kCrcLength`.
/// The answer to Times tells in this unit how long Start, End and Check may take, at most so many of it.
inline constexpr std::chrono::milliseconds kTimesUnit{100};
inline constexpr std::uint8_t kMostTime = 100;
inline constexpr std::size_t kLongestFrame = kHeaderLength + 1 + 2 * kMostWords + kCrcLength;

/// Line speeds in bits per second, slowest first; a speed's place here is its code in a frame.
inline constexpr std::array<int, 7> kSpeeds = {9600, 19200, 57600, 115200, 230400, 460800, 921600};
/// Speed of a mount that was just switched on, unless it is slower altogether.
inline constexpr int kBaseSpeed = 19200;
inline constexpr int kBitsPerByte = 10;
/// The code of a speed; one past the last for what is none.
std::uint8_t SpeedCode(int speed);

struct Frame {
  Kind kind = Kind::Request;
  Command command = Command::Identify;
  std::uint8_t sequence = 0;
  std::uint8_t address = kMountAddress;
  Bytes payload;
  /// Set where the frame travels in the short form: number of the block's first word. The payload of a
  /// request has it all the same.
  std::optional<std::uint16_t> brief{};

  bool operator==(const Frame&) const = default;
};

/// What both ends know of a block beforehand, so that a short frame need not carry it.
struct Known {
  std::uint8_t sequence = 0;
  std::uint8_t address = kMountAddress;
  std::uint16_t first = 0;  ///< Number of the block's first word.

  bool operator==(const Known&) const = default;
};

bool IsWrite(Command command);
/// What is known of the block of a Write request once it has been heard.
Known KnownOf(const Frame& write);
/// The same of the block that follows it, if it follows at once.
Known FollowerOf(const Frame& write);

/// The frame's bytes. The payload must have the length that `PayloadLength` tells.
Bytes Encode(const Frame& frame);

/// The length of a payload, or nothing when `head` begins no frame. The answer to Read tells its
/// length in its first byte, `first`, which may be missing: then 1, so much is needed to know more.
std::optional<std::size_t> PayloadLength(std::uint8_t head, std::optional<std::uint8_t> first);

/// Bytes that the done answer to `request` takes on the line.
std::size_t AnswerLength(const Frame& request);

enum class Scan { Whole, Partial, None };

/// What `bytes` begin with: a whole frame with a right CRC, which is put into `frame` with its bytes
/// counted in `length`; a part of what may become one; or no frame. A short frame is one of a block in
/// `known` or none at all.
Scan ScanFrame(ByteView bytes, Frame& frame, std::size_t& length, std::span<const Known> known = {});

/// Takes requests out of a stream of bytes, in order, skipping what is none. Holds less than the bytes
/// of one request back.
class RequestReader {
 public:
  void Push(ByteView bytes) { mBytes.insert(mBytes.end(), bytes.begin(), bytes.end()); }
  /// The next whole request, or nothing until more bytes come.
  std::optional<Frame> Next();
  /// True while the start of a possible request waits for the rest.
  bool Waiting() const { return !mBytes.empty(); }
  /// Gives up the request that is waited for: the bytes behind its first one are looked at anew.
  void GiveUp();
  /// Blocks of which short requests may come from now on.
  void Know(std::vector<Known> known) { mKnown = std::move(known); }
  void Clear() { *this = {}; }

 private:
  Bytes mBytes;
  std::vector<Known> mKnown;
};

/// 16-bit numbers in payloads, high byte first.
inline std::uint16_t Get16(ByteView bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}
inline void Put16(Bytes& bytes, std::uint16_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

}  // namespace tarnwick::wire
