#include "mount/Device.h"

#include <array>

#include "linklib/Checksum.h"

namespace tarnwick::mount {
namespace {

using wire::Command;
using wire::Reason;

constexpr int kRenewedLoader = 2;
/// From this revision on, firmware occupies the whole memory and leaves it only when told to.
constexpr int kLargeRevision = 4;

/// Where an image carries its version: two marker words, then major and minor.
constexpr std::uint32_t kMarker = 8;
constexpr std::array<std::uint16_t, 2> kMarkerWords = {0x1A5A, 0x25A5};

/// How the two kinds of boot packages begin, and where the second tells its hardware revision.
constexpr std::array<std::uint16_t, 3> kJumpFix = {0x120A, 0x118A, 0x2810};
constexpr std::array<std::uint16_t, 3> kBootUpdate = {0xD8FF, 0xEF00, 0xF003};
constexpr std::uint32_t kBootUpdateRevision = 0x347;

template <std::size_t n>
bool Carries(const Memory& memory, std::uint32_t first, const std::array<std::uint16_t, n>& words) {
  for (std::uint32_t i = 0; i < n; ++i)
    if (memory.ImageWord(first + i) != words[i]) return false;
  return true;
}

enum class ImageKind { Application, BootPackage, ForeignBootPackage };

/// What kind of image a device of that revision holds.
ImageKind KindOf(const Memory& memory, int revision) {
  if (Carries(memory, 0, kJumpFix))
    return revision < kLargeRevision ? ImageKind::BootPackage : ImageKind::ForeignBootPackage;
  if (!Carries(memory, 0, kBootUpdate)) return ImageKind::Application;
  const bool knows = revision == 5 || revision == 6;
  const bool fits = (memory.ImageWord(kBootUpdateRevision) & 0xFF) == revision;
  return knows && fits ? ImageKind::BootPackage : ImageKind::ForeignBootPackage;
}

std::uint8_t Byte(int value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

/// A made-up complete firmware of that version: a vector, the marker words and some code.
void PutFactoryImage(Memory& memory, int major, int minor) {
  constexpr std::uint32_t kWords = 256;
  for (std::uint32_t i = 0; i < kWords; ++i) memory.ImageWord(i, static_cast<std::uint16_t>(0x1000 + i * 7));
  for (std::uint32_t i = 0; i < kMarkerWords.size(); ++i) memory.ImageWord(kMarker + i, kMarkerWords[i]);
  memory.ImageWord(kMarker + 2, Byte(major));
  memory.ImageWord(kMarker + 3, Byte(minor));
}

}  // namespace

Device::Device(const DeviceSetup& setup)
    : mModel(setup.model),
      mRevision(setup.revision),
      mBootVersion(setup.bootVersion),
      mClaims(setup.claims),
      mState(setup.state),
      mComplete(setup.state == RunState::Running),
      mMemory(setup.revision) {
  mMemory.Loader(mBootVersion >= kRenewedLoader);
  if (mComplete) PutFactoryImage(mMemory, setup.major, setup.minor);
}

void Device::PowerCycle() {
  if (mState != RunState::Silent) mState = mComplete ? RunState::Running : RunState::Boot;
}

Version Device::ImageVersion() const {
  if (!Carries(mMemory, kMarker, kMarkerWords)) return {};
  return {mMemory.ImageWord(kMarker + 2), mMemory.ImageWord(kMarker + 3)};
}

/// Which command is taken in which state; docs/link-protocol.md has the same as a table.
bool Device::Takes(Command command) const {
  const bool running = mState == RunState::Running;
  switch (command) {
    case Command::State:
    case Command::Read:
      return true;
    case Command::Model:
    case Command::Revision:
    case Command::Enter:
      return running;
    case Command::BootRevision:
      return !running || mRevision < kLargeRevision;
    case Command::BootVersion:
      return !running || mRevision == 5 || mRevision == 6;
    case Command::Start:
      return mState == RunState::Boot;
    case Command::End:
    case Command::Check:
    case Command::Write1:
    case Command::Write2:
    case Command::Write4:
      return mState == RunState::Program;
    case Command::Identify:
    case Command::Speed:
    case Command::Times:
    case Command::Lock:
      break;
  }
  return false;
}

Reply Device::Handle(Command command, const wire::Bytes& payload) {
  if (!Takes(command)) return Reply::Refused(Reason::WrongState);
  switch (command) {
    case Command::State:
      return TellState();
    case Command::Model:
      return Reply::Done({Byte(mModel >> 8), Byte(mModel)});
    case Command::Revision:
      return Reply::Done({Byte(mRevision)});
    case Command::BootRevision:
      return TellBootRevision();
    case Command::BootVersion:
      return Reply::Done({Byte(mBootVersion)});
    case Command::Enter:
      mState = RunState::Boot;
      return Reply::Done();
    case Command::Start:
      return Start();
    case Command::End:
      return End();
    case Command::Check:
      return Check(payload);
    case Command::Read:
      return Read(payload);
    default:
      return Write(payload);
  }
}

Reply Device::TellState() const {
  const Version version = mState == RunState::Running ? ImageVersion() : Version{};
  return Reply::Done({static_cast<std::uint8_t>(mState), Byte(version.major), Byte(version.minor)});
}

Reply Device::TellBootRevision() {
  if (mState == RunState::Running) mState = RunState::Boot;
  const bool old = mBootVersion < kRenewedLoader;
  return Reply::Done({Byte(old && mClaims >= 0 ? mClaims : mRevision)});
}

Reply Device::Start() {
  mComplete = false;
  mMemory.Erase();
  mState = RunState::Program;
  return Reply::Done();
}

Reply Device::Write(const wire::Bytes& payload) {
  const std::uint32_t first = wire::Get16(payload, 0);
  const auto count = static_cast<std::uint32_t>(payload.size() / 2 - 1);
  if (!mMemory.HasImageWord(first + count - 1)) return Reply::Refused(Reason::OutOfRange);
  for (std::uint32_t i = 0; i < count; ++i)
    mMemory.ImageWord(first + i, static_cast<std::uint16_t>(payload[3 + 2 * i] << 8 | payload[2 + 2 * i]));
  return Reply::Done();
}

Reply Device::End() {
  mState = RunState::Boot;
  const ImageKind kind = KindOf(mMemory, mRevision);
  if (kind == ImageKind::ForeignBootPackage) return Reply::Refused(Reason::NotTaken);
  mComplete = kind == ImageKind::Application;
  if (kind == ImageKind::BootPackage) {
    mBootVersion = kRenewedLoader;
    mMemory.Loader(true);
  }
  return Reply::Done();
}

Reply Device::Check(const wire::Bytes& payload) const {
  const std::uint32_t first = wire::Get16(payload, 0);
  const std::uint32_t last = wire::Get16(payload, 2);
  if (first > last || !mMemory.HasImageWord(last)) return Reply::Refused(Reason::OutOfRange);
  wire::Bytes bytes;
  for (std::uint32_t i = first; i <= last; ++i) {
    bytes.push_back(Byte(mMemory.ImageWord(i)));
    bytes.push_back(Byte(mMemory.ImageWord(i) >> 8));
  }
  const std::uint32_t crc = wire::Crc32(bytes);
  wire::Bytes answer;
  wire::Put16(answer, static_cast<std::uint16_t>(crc >> 16));
  wire::Put16(answer, static_cast<std::uint16_t>(crc & 0xFFFF));
  return Reply::Done(std::move(answer));
}

Reply Device::Read(const wire::Bytes& payload) const {
  const std::uint32_t first = wire::Get16(payload, 0);
  const std::uint32_t count = payload[2];
  if (count == 0 || count > wire::kMostWords) return Reply::Refused(Reason::OutOfRange);
  wire::Bytes answer{payload[2]};
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!mMemory.HasPlace(first + i)) return Reply::Refused(Reason::OutOfRange);
    wire::Put16(answer, mMemory.At(first + i));
  }
  return Reply::Done(std::move(answer));
}

}  // namespace tarnwick::mount
