#include "firmware/QALclass.h"

#include <array>

#include "HexLine.h"
#include "QalParser.h"
#include "platform/contain.h"
#include "platform/files.h"

namespace tarnwick {
namespace {

constexpr std::uint8_t kFillerLoByte = 0xFF;
constexpr std::uint8_t kFillerHiByte = 0x3F;

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

}  // namespace

std::unique_ptr<QALclass> gQAL;

std::string QALclass::LastErrorMessage() const {
  return std::string(kMessages[static_cast<std::size_t>(LastError())]);
}

std::int32_t QALclass::HwRevValue(std::int32_t index) const {
  return index >= 1 && index <= HwRevCount() ? mPackage.HwRevValues[static_cast<std::size_t>(index - 1)] : 0;
}

std::optional<std::uint8_t> QALclass::Filler(std::uint8_t byte) const {
  return mPackage.Padded ? std::optional(byte) : std::nullopt;
}

std::optional<std::uint8_t> QALclass::DeviceHiByte(std::int32_t device, std::int32_t word) const {
  const QalWord* given = mPackage.FindWord(device, word);
  return given != nullptr ? given->HiByte : Filler(kFillerHiByte);
}

std::optional<std::uint8_t> QALclass::DeviceLoByte(std::int32_t device, std::int32_t word) const {
  const QalWord* given = mPackage.FindWord(device, word);
  return given != nullptr ? given->LoByte : Filler(kFillerLoByte);
}

bool QALclass::DeviceNullPadded(std::int32_t device, std::int32_t word) const {
  return mPackage.Padded && mPackage.FindWord(device, word) == nullptr;
}

void QALclass::LoadQALfile(std::filesystem::path filename, std::string_view text) {
  mPackage = QalPackage();
  mPackage.RealFilename = std::move(filename);
  if (Contain([&] { Load(text); })) return;
  filename = std::move(mPackage.RealFilename);
  mPackage = QalPackage();
  mPackage.RealFilename = std::move(filename);
  mPackage.SetError(QalError::FileNotFound);
}

void QALclass::Load(std::string_view text) {
  if (!text.empty()) return QalParser(mPackage).Parse(text);
  const std::optional<std::string> content = files::ReadWhole(mPackage.RealFilename);
  if (!content) return mPackage.SetError(QalError::FileNotFound);
  QalParser(mPackage).Parse(*content);
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
