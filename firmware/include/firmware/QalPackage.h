// What a firmware package holds, as plain data. The format is told in docs/package-format.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

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

/// One program memory word, as the last record for it left it.
struct QalWord {
  /// How many devices were declared when the word was written, 0 if it never was. A record reaches
  /// the devices declared above it, so device number d has this word if and only if d <= Devices.
  std::int32_t Devices = 0;
  std::uint8_t LoByte = 0;
  std::uint8_t HiByte = 0;
};

/// The words from index 0 that the blocks of one record id fill. All devices of that id look at the
/// one image, and `QalWord::Devices` keeps them apart: a hex line costs the same for one device and
/// for a hundred thousand.
using QalImage = std::vector<QalWord>;

/// One device that a package declares.
struct QalDevice {
  std::string Name;
  std::int32_t Address = 0;
  std::string RecordID;    ///< Upper case.
  double Version = 0.0;    ///< major + minor/100, from the tail of the record id.
  std::int32_t Words = 0;  ///< Highest word index, not a count. Known at the end of the load.
  std::size_t Data = 0;    ///< Which of the package's images.
};

/// One parsed package; a new one is what every load starts from.
struct QalPackage {
  double FileVersion = 0.0;
  std::string Filename;
  std::filesystem::path RealFilename;
  std::string FileDate;
  std::string Comments;
  std::int32_t ModelNumber = 0;
  std::string ModelName;
  std::string HwRev;
  std::vector<std::int32_t> HwRevValues;  ///< `HwRev` split at the commas.
  std::vector<QalDevice> Devices;
  std::vector<QalImage> Images;
  bool Padded = false;  ///< Words without a value count as filler: the load ended well.
  QalError Error = QalError::None;
  std::int32_t ErrorLine = 0;
  std::int32_t LineCounter = 0;  ///< Lines consumed; stays at the highest number it can hold.

  /// Notes an error at the current line. A later one replaces it.
  void SetError(QalError error);

  /// Word `word` of device `device` (from 1), or none when no record gave it.
  const QalWord* FindWord(std::int32_t device, std::int32_t word) const;
};

}  // namespace tarnwick
