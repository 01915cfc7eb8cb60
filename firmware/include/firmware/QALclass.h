// The loader of firmware packages (*.qal). The format is told in docs/package-format.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "firmware/QalPackage.h"

namespace tarnwick {

/// A device's whole image.
struct QalDeviceImage {
  std::vector<QalWord> Words;
  std::int32_t NullPadded = 0;  ///< How many of them no record of the package gave.
};

/// One parsed firmware package. Every load replaces the whole contents and always returns; callers
/// test `ErrorsFound` before they use an image. Device indices run from 1 to `Devices`, word indices
/// from 0 to `DeviceWords`, revision indices from 1 to `HwRevCount`; indices are not checked, but
/// for `HwRevValue`.
class QALclass {
 public:
  /// With `identifies`, each load also tells the package's `Identity`, which takes longer than all the rest.
  explicit QALclass(bool identifies = false) : mIdentifies(identifies) {}

  /// From now on no load is told to the record.
  void Quiet() { mQuiet = true; }

  /// 0 to 8; 0 means none.
  std::int32_t LastError() const { return static_cast<std::int32_t>(mPackage.Error); }
  /// The text for `LastError`; empty without an error.
  std::string LastErrorMessage() const;
  /// Line of the error, from 1; 0 when the file was not found.
  std::int32_t LastErrorLine() const { return mPackage.ErrorLine; }
  /// Why the file was "not found", which is told alike of all that keeps it from being read; none for any
  /// other error.
  std::error_code Cause() const { return mCause; }
  double FileVersion() const { return mPackage.FileVersion; }
  const std::string& Filename() const { return mPackage.Filename; }
  /// The path given to the last load.
  const std::filesystem::path& RealFilename() const { return mPackage.RealFilename; }
  /// Size and CRC-32 of what the last load read, of one that ended in an error perhaps a part only; zeros
  /// where they were not wanted.
  const QalIdentity& Identity() const { return mPackage.Identity; }
  const std::string& FileDate() const { return mPackage.FileDate; }
  const std::string& Comments() const { return mPackage.Comments; }
  std::int32_t ModelNumber() const { return mPackage.ModelNumber; }
  const std::string& ModelName() const { return mPackage.ModelName; }
  /// Value of the revision list, unsplit.
  const std::string& HwRev() const { return mPackage.HwRev.Text(); }
  std::int32_t HwRevCount() const { return mPackage.HwRev.Count(); }
  /// Revision `index` of the list; 0 outside 1 to `HwRevCount`.
  std::int32_t HwRevValue(std::int32_t index) const { return mPackage.HwRev.Value(index); }
  bool ErrorsFound() const { return mPackage.Error != QalError::None; }
  std::int32_t Devices() const { return static_cast<std::int32_t>(mPackage.Devices.size()); }

  std::string DeviceName(std::int32_t device) const { return std::string(mPackage.Device(device).Name); }
  void DeviceName(std::int32_t device, std::string_view name) {
    mPackage.Device(device).Name = mPackage.Texts.Add(name);
  }
  /// Bus address.
  std::int32_t DeviceAddress(std::int32_t device) const { return mPackage.Device(device).Address; }
  void DeviceAddress(std::int32_t device, std::int32_t address) { mPackage.Device(device).Address = address; }
  std::string DeviceRecordID(std::int32_t device) const {
    return std::string(mPackage.Images[mPackage.Device(device).Data].RecordID);
  }
  double DeviceVersion(std::int32_t device) const { return mPackage.Device(device).Version; }
  void DeviceVersion(std::int32_t device, double version) { mPackage.Device(device).Version = version; }
  /// Highest word index of the image.
  std::int32_t DeviceWords(std::int32_t device) const { return mPackage.Device(device).Words; }
  /// After a load without errors every word up to `DeviceWords` has both bytes.
  std::optional<std::uint8_t> DeviceHiByte(std::int32_t device, std::int32_t word) const;
  std::optional<std::uint8_t> DeviceLoByte(std::int32_t device, std::int32_t word) const;
  /// All words up to `DeviceWords` at once, padded ones too. Only after a load without errors.
  QalDeviceImage DeviceImage(std::int32_t device) const;
  /// A device with the same image: the first one, so that devices of the same answer need be looked at
  /// only once. A device whose image nobody shares gets its own number.
  std::int32_t DeviceTwin(std::int32_t device) const { return mPackage.Device(device).Twin; }
  /// True for a word that no record of the package gave, so that it was filled on load.
  bool DeviceNullPadded(std::int32_t device, std::int32_t word) const;

  /// Loads the file `filename`, or, when `text` is not empty, parses `text` as a package and only
  /// remembers `filename`. A file that cannot be opened or read, and memory that cannot be had, give
  /// the error of a file not found and leave no devices.
  void LoadQALfile(std::filesystem::path filename, std::string_view text = {});

  /// Value of a string of hexadecimal digits; a character that is none sets the error for it and
  /// counts as 0. More than eight digits keep the low 32 bits.
  std::int32_t HexToLong(std::string_view digits);

 private:
  /// What a word without a value shows.
  std::optional<std::uint8_t> Filler(std::uint8_t byte) const;
  /// False when the package cannot be read. Both throw when memory cannot be had.
  bool LoadText(std::string_view text);
  bool LoadFile();

  /// Tells the record why the load failed.
  void NoteError() const;

  bool mIdentifies;
  bool mQuiet = false;
  QalPackage mPackage;
  std::error_code mCause;
};

/// The program's one package: made when the settings are loaded, released when they are saved.
/// None before and after.
extern std::unique_ptr<QALclass> gQAL;

}  // namespace tarnwick
