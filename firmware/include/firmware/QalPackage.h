// What a firmware package holds, as plain data. The format is told in docs/package-format.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/QalImage.h"

namespace tarnwick {

/// Why a load ended early; the numbers that the user sees.
enum class QalError : std::int32_t {
  None,
  FileNotFound,  ///< Also a file that cannot be read, and memory that cannot be had.
  HexTooShort,
  HexWrongLength,
  HexCheckSum,
  HexInvalidType,
  HexInvalidCharacter,
  NoDataForDevice,
  NoMatchingEnd,
};

/// By what a package is known again: size in bytes and CRC-32 of all that a load read.
struct QalIdentity {
  std::uintmax_t Size = 0;
  std::uint32_t Crc = 0;
  friend bool operator==(const QalIdentity&, const QalIdentity&) = default;
};

/// One device that a package declares.
struct QalDevice {
  std::string_view Name;  ///< In `QalPackage::Texts`.
  double Version = 0.0;   ///< major + minor/100, from the tail of the record id.
  std::int32_t Address = 0;
  std::int32_t Words = 0;  ///< Highest word index, not a count. Known at the end of the load.
  std::uint32_t Data = 0;  ///< Which of the package's images; it tells the record id.
  std::int32_t Twin = 0;   ///< Number of the first device that has the same words; often its own.
};

/// The hardware revisions that a package fits.
class QalRevisions {
 public:
  QalRevisions() = default;
  /// `text` is the list as it stands in the package. Throws when memory cannot be had.
  explicit QalRevisions(std::string text);

  const std::string& Text() const { return mText; }
  /// 0 for an empty text, else the number of fields between commas.
  std::int32_t Count() const { return mCount; }
  /// Field `index` as a whole number; 0 outside 1 to `Count`.
  std::int32_t Value(std::int32_t index) const;

 private:
  std::string mText;
  std::vector<std::size_t> mMarks;  ///< Where each 64th field begins.
  std::int32_t mCount = 0;
};

/// One parsed package; a new one is what every load starts from.
struct QalPackage {
  double FileVersion = 0.0;
  std::string Filename;
  std::filesystem::path RealFilename;
  QalIdentity Identity;
  std::string FileDate;
  std::string Comments;
  std::int32_t ModelNumber = 0;
  std::string ModelName;
  QalRevisions HwRev;
  QalTexts Texts;  ///< Of devices and images.
  ChunkList<QalDevice, 64> Devices;
  QalImages Images;
  bool Padded = false;  ///< Words without a value count as filler: the load ended well.
  QalError Error = QalError::None;
  std::int32_t ErrorLine = 0;
  std::int32_t LineCounter = 0;  ///< Lines consumed; stays at the highest number it can hold.

  /// Notes an error at the current line. A later one replaces it.
  void SetError(QalError error);

  /// Device number `device`, from 1.
  QalDevice& Device(std::int32_t device) { return Devices[static_cast<std::size_t>(device - 1)]; }
  const QalDevice& Device(std::int32_t device) const { return Devices[static_cast<std::size_t>(device - 1)]; }
  /// Word `word` of device `device` (from 1), or none when no record gave it.
  std::optional<QalWord> FindWord(std::int32_t device, std::int32_t word) const;
};

}  // namespace tarnwick
