// The loader of firmware packages (*.qal). The format is told in docs/package-format.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// One program memory word of an image.
struct QalWord {
  std::optional<std::uint8_t> HiByte;
  std::optional<std::uint8_t> LoByte;
  bool NullPadded = false;  ///< A byte of this word was filled on load.
};

/// One device that a package declares.
struct QalDevice {
  std::string Name;
  std::int32_t Address = 0;
  std::string RecordID;  ///< Upper case.
  double Version = 0.0;  ///< major + minor/100, from the tail of the record id.
  std::int32_t Words = 0;  ///< Highest word index, not a count.
  std::vector<QalWord> Data;
};

/// One parsed firmware package. Every load replaces the whole contents and always returns; callers
/// test `ErrorsFound` before they use an image. Device indices run from 1 to `Devices`, word indices
/// from 0 to `DeviceWords`, revision indices from 1 to `HwRevCount`; indices are not checked, but
/// for `HwRevValue`.
class QALclass {
 public:
  std::int32_t LastError() const { return mLastError; }
  /// The text for `LastError`; empty without an error.
  std::string LastErrorMessage() const;
  /// Line of the error, from 1; 0 when the file was not found.
  std::int32_t LastErrorLine() const { return mLastErrorLine; }
  double FileVersion() const { return mFileVersion; }
  const std::string& Filename() const { return mFilename; }
  /// The path given to the last load. Cleared and set by the load: pass a copy to reload it.
  const std::filesystem::path& RealFilename() const { return mRealFilename; }
  const std::string& FileDate() const { return mFileDate; }
  const std::string& Comments() const { return mComments; }
  std::int32_t ModelNumber() const { return mModelNumber; }
  const std::string& ModelName() const { return mModelName; }
  /// Value of the revision list, unsplit.
  const std::string& HwRev() const { return mHwRev; }
  std::int32_t HwRevCount() const;
  /// Revision `index` of the list; 0 outside 1 to `HwRevCount`.
  std::int32_t HwRevValue(std::int32_t index) const;
  bool ErrorsFound() const { return mErrorsFound; }
  std::int32_t Devices() const { return static_cast<std::int32_t>(mDevices.size()); }

  const std::string& DeviceName(std::int32_t device) const { return Device(device).Name; }
  void DeviceName(std::int32_t device, std::string name) { Device(device).Name = std::move(name); }
  std::int32_t DeviceAddress(std::int32_t device) const { return Device(device).Address; }
  void DeviceAddress(std::int32_t device, std::int32_t address) { Device(device).Address = address; }
  const std::string& DeviceRecordID(std::int32_t device) const { return Device(device).RecordID; }
  double DeviceVersion(std::int32_t device) const { return Device(device).Version; }
  void DeviceVersion(std::int32_t device, double version) { Device(device).Version = version; }
  /// Highest word index of the image.
  std::int32_t DeviceWords(std::int32_t device) const { return Device(device).Words; }
  std::optional<std::uint8_t> DeviceHiByte(std::int32_t device, std::int32_t word) const;
  std::optional<std::uint8_t> DeviceLoByte(std::int32_t device, std::int32_t word) const;
  bool DeviceNullPadded(std::int32_t device, std::int32_t word) const;

  /// Loads the file `filename`, or, when `text` is not empty, parses `text` as a package and only
  /// remembers `filename`.
  void LoadQALfile(std::filesystem::path filename, std::string_view text = {});

  /// Value of a string of hexadecimal digits; a character that is none sets the error for it and
  /// counts as 0. More than eight digits keep the low 32 bits.
  std::int32_t HexToLong(std::string_view digits);

 private:
  const QalDevice& Device(std::int32_t device) const { return mDevices[static_cast<std::size_t>(device - 1)]; }
  QalDevice& Device(std::int32_t device) { return mDevices[static_cast<std::size_t>(device - 1)]; }

  double mFileVersion = 0.0;
  std::string mFilename;
  std::filesystem::path mRealFilename;
  std::string mFileDate;
  std::string mComments;
  std::int32_t mModelNumber = 0;
  std::string mModelName;
  std::string mHwRev;
  bool mErrorsFound = false;
  std::int32_t mLastError = 0;
  std::int32_t mLastErrorLine = 0;
  std::vector<QalDevice> mDevices;
};

/// The program's one package: made when the settings are loaded, released when they are saved.
/// None before and after.
extern std::unique_ptr<QALclass> gQAL;

}  // namespace tarnwick
