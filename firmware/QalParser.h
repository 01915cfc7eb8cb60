// Reads the text of a firmware package line by line. The format is told in docs/package-format.md.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "HexLine.h"
#include "LongLine.h"
#include "QalIds.h"
#include "firmware/QalPackage.h"
#include "platform/text.h"

namespace tarnwick {

/// One pass over one text; made for it and thrown away behind it.
class QalParser {
 public:
  /// `package` is new and outlives the parser.
  explicit QalParser(QalPackage& package) : mPackage(package) {}

  /// Reads the lines of `text`, up to the first failing one, and tells how many bytes they take. What
  /// is behind the last line end is for the caller to give again, in front of what follows it; of a long
  /// line nothing is left. Throws when memory cannot be had.
  std::size_t ReadLines(std::string_view text);
  /// Tells the devices' sizes, and pads their images unless the load failed. To be called once, at the
  /// end of the text.
  void Finish();
  bool Failed() const { return mPackage.Error != QalError::None; }

 private:
  static constexpr std::uint32_t kNone = static_cast<std::uint32_t>(-1);

  std::int32_t DeviceCount() const { return static_cast<std::int32_t>(mPackage.Devices.size()); }
  void CountLine();
  bool TakeLongLine(std::string_view& rest);
  void ReadLine(std::string_view line);
  void ReadKeyLine(text::KeyValue line);
  void StoreRecord();
  void ReadFileVersion(std::string_view value);
  void DeclareDevice(std::string_view value);
  std::uint32_t ImageOf(const std::string& recordId);
  void OpenBlock(std::string_view value);
  void CloseBlock(std::string_view value);
  void MeasureDevices();
  void RequireData();
  void PadDevices();

  QalPackage& mPackage;
  QalIds mIds{mPackage.Images};
  std::string mRecordID;         ///< Of the open block; empty outside one.
  std::uint32_t mImage = kNone;  ///< Where its hex lines go; none while no device wants them.
  HexLine mHexLine;
  LongLine mLongLine;
};

}  // namespace tarnwick
