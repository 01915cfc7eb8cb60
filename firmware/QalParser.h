// Reads the text of a firmware package line by line. The format is told in docs/package-format.md.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "HexLine.h"
#include "firmware/QalPackage.h"

namespace tarnwick {

/// One pass over one text; made for it and thrown away behind it.
class QalParser {
 public:
  /// `package` is new and outlives the parser.
  explicit QalParser(QalPackage& package) : mPackage(package) {}

  /// Fills the package, up to the first failing line. Throws when memory cannot be had.
  void Parse(std::string_view text);

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  bool Failed() const { return mPackage.Error != QalError::None; }
  void ReadLine(std::string_view line);
  void ReadKeyLine(std::string_view line);
  void StoreRecord();
  void ReadFileVersion(std::string_view value);
  void ReadHwRev(std::string value);
  void DeclareDevice(std::string_view value);
  void OpenBlock(std::string_view value);
  void CloseBlock(std::string_view value);
  void MeasureDevices();
  void RequireData();
  void PadDevices();

  QalPackage& mPackage;
  std::map<std::string, std::size_t, std::less<>> mImageOf;  ///< Index of the image by record id.
  std::string mRecordID;                                     ///< Of the open block; empty outside one.
  std::size_t mImage = kNone;  ///< Where its hex lines go; none while no device wants them.
  HexLine mHexLine;
};

}  // namespace tarnwick
