#include "firmware/QALclass.h"

#include <array>

#include "HexLine.h"
#include "QalParser.h"
#include "platform/contain.h"
#include "platform/crc32.h"
#include "platform/files.h"
#include "platform/pieces.h"
#include "platform/record.h"

namespace tarnwick {
namespace {

constexpr QalWord kFiller = {.LoByte = 0xFF, .HiByte = 0x3F};

constexpr std::array<std::string_view, 9> kMessages = {
    "",
    "QAL File Not Found",
    "Hex Line Too Short",
    "Hex Line Wrong Length",
    "Hex Line CheckSum Error",
    "Hex Line Invalid Type",
    "Hex Line Invalid Character",
    "No Data Found For Device",
    "No Matching END_HEX Found",
};

/// Size and CRC of what was read, piece after piece.
class Digest {
 public:
  /// Adds nothing up where it is not wanted: that would take longer than all the rest of a load.
  explicit Digest(bool wanted) : mWanted(wanted) {}
  void Add(std::string_view piece) {
    if (!mWanted) return;
    mSize += piece.size();
    mCrc.Add(piece);
  }
  QalIdentity Value() const { return mWanted ? QalIdentity{mSize, mCrc.Value()} : QalIdentity(); }

 private:
  const bool mWanted;
  std::uintmax_t mSize = 0;
  Crc32 mCrc;
};

}  // namespace

std::unique_ptr<QALclass> gQAL;

std::string QALclass::LastErrorMessage() const {
  return std::string(kMessages[static_cast<std::size_t>(LastError())]);
}

std::optional<std::uint8_t> QALclass::Filler(std::uint8_t byte) const {
  return mPackage.Padded ? std::optional(byte) : std::nullopt;
}

std::optional<std::uint8_t> QALclass::DeviceHiByte(std::int32_t device, std::int32_t word) const {
  const std::optional<QalWord> given = mPackage.FindWord(device, word);
  return given ? given->HiByte : Filler(kFiller.HiByte);
}

std::optional<std::uint8_t> QALclass::DeviceLoByte(std::int32_t device, std::int32_t word) const {
  const std::optional<QalWord> given = mPackage.FindWord(device, word);
  return given ? given->LoByte : Filler(kFiller.LoByte);
}

bool QALclass::DeviceNullPadded(std::int32_t device, std::int32_t word) const {
  return mPackage.Padded && !mPackage.FindWord(device, word);
}

QalDeviceImage QALclass::DeviceImage(std::int32_t device) const {
  QalDeviceImage image;
  image.Words.assign(static_cast<std::size_t>(DeviceWords(device)) + 1, kFiller);
  const std::size_t given = mPackage.Images.Copy(mPackage.Device(device).Data, device, image.Words);
  image.NullPadded = static_cast<std::int32_t>(image.Words.size() - given);
  return image;
}

void QALclass::LoadQALfile(std::filesystem::path filename, std::string_view text) {
  mPackage = QalPackage();
  mPackage.RealFilename = std::move(filename);
  mCause.clear();
  bool found = false;
  if (!Contain([&] { found = text.empty() ? LoadFile() : LoadText(text); }))
    mCause = files::Problem::NoMemory;
  if (mCause || !found) {
    filename = std::move(mPackage.RealFilename);
    mPackage = QalPackage();
    mPackage.RealFilename = std::move(filename);
    mPackage.SetError(QalError::FileNotFound);
  }
  if (ErrorsFound() && !mQuiet) Contain([&] { NoteError(); });
}

void QALclass::NoteError() const {
  const std::string cause =
      mCause ? mCause.message() : LastErrorMessage() + " at Line " + std::to_string(LastErrorLine());
  record::Failure("loading the package " + mPackage.RealFilename.filename().string(), cause);
}

bool QALclass::LoadText(std::string_view text) {
  Digest digest(mIdentifies);
  QalParser parser(mPackage);
  parser.ReadLines(text);
  parser.Finish();
  digest.Add(text);
  mPackage.Identity = digest.Value();
  return true;
}

bool QALclass::LoadFile() {
  files::PieceReader file(mPackage.RealFilename);
  Digest digest(mIdentifies);
  QalParser parser(mPackage);
  while (!parser.Failed() && file.Next()) {
    const std::size_t taken = parser.ReadLines(file.Text());
    digest.Add(file.Text().substr(0, taken));
    file.Take(taken);
  }
  mCause = file.Error();
  if (mCause) return false;
  parser.Finish();
  digest.Add(file.Text());
  mPackage.Identity = digest.Value();
  return true;
}

std::int32_t QALclass::HexToLong(std::string_view digits) {
  std::uint32_t value = 0;
  for (const char character : digits) {
    const HexDigitValue digit = HexDigit(character);
    if (digit == kNoHexDigit) mPackage.SetError(QalError::HexInvalidCharacter);
    value = (value << 4) | (digit & 0xFu);
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace tarnwick
