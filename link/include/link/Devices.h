// The table of devices on the bus: what was found at each address, and how to find out anew.
//
// The table is the only memory of what was found. Rows are numbered from 1. Nothing here shows a
// message: a device that cannot be read shows up as State 0 or -1, Model 0, Version 0.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick {

/// Run state of a device.
enum class McState : std::int32_t { Unknown = -1, NoResponse = 0, Running = 1, BootMode = 2, Program = 3 };

/// One device on the bus.
struct DeviceEntry {
  std::int32_t QalIndex = 0;  ///< Index from 1 in the package `gQAL`; 0 when it does not hold the device.
  std::int32_t Address = 0;
  std::string Name;
  std::int32_t Model = 0;  ///< 0 when not known.
  std::string ModelName;
  McState State = McState::NoResponse;
  std::string StateName;
  double Version = 0.0;          ///< major + minor/100; 0 when not known.
  std::int32_t HwRevBoot = 0;    ///< Last revision read from the boot loader; survives a refresh.
  std::int32_t HwRevApp = 0;     ///< Last revision read from running firmware; survives a refresh.
  std::int32_t HwRev = 0;        ///< Revision of the latest read, 0 when it failed or was not possible.
  std::int32_t BootVersion = 0;  ///< Boot loader version; 0 when not known.
};

/// The rows of `gDevices`, numbered from 1.
class DeviceTable {
 public:
  /// A row that is not there raises `std::out_of_range`, here and in every operation below that takes the
  /// number of a row. The reference holds until the next `Assign`.
  DeviceEntry& operator[](std::int32_t index) { return mRows.at(static_cast<std::size_t>(index - 1)); }
  void Assign(std::vector<DeviceEntry> rows) { mRows = std::move(rows); }
  std::int32_t Count() const { return static_cast<std::int32_t>(mRows.size()); }
  auto begin() { return mRows.begin(); }
  auto end() { return mRows.end(); }

 private:
  std::vector<DeviceEntry> mRows;
};

extern DeviceTable gDevices;
/// Class of device in use: 0 motor control board, 1 accessories.
extern std::int32_t gDeviceClass;
/// Rows in `gDevices`.
std::int32_t gDeviceCount();

/// The name of a model of the class in use, "Unknown" for a number that none has.
std::string ModelNameOf(std::int32_t model);

/// Builds the two rows of a class from nothing; any class but 0 and 1 leaves the table as it is.
void SetupDevices(std::int32_t deviceClass);

/// Refreshes one row from the device. Asks the link library up to four questions, each within its own bound
/// of time (link/LinkLibrary.h); a silent device takes all of it.
void RefreshDevice(std::int32_t index);
/// Refreshes every row.
void RefreshDevices();
/// Forgets the revisions of a row: `HwRev`, `HwRevApp` and `HwRevBoot` become 0.
void ForgetRevisions(std::int32_t index);

/// True of revisions 5 and 6: the only ones whose boot loader tells a version, and is believed only
/// from version 2 on.
bool HasBootVersion(std::int32_t revision);

/// Sets `State`, `StateName` and, when running, `Version`.
void ReadDeviceState(std::int32_t index);
/// Sets the revision fields as far as `State` allows.
void ReadDeviceHwRev(std::int32_t index);
/// Sets `BootVersion` when `State` allows it; a failure leaves it as it was.
void ReadBootVersion(std::int32_t index);
/// True when `model` was filled.
bool ReadModelNumber(std::int32_t address, std::int32_t& model);

/// The revision to hold against a package, 0 when none can be told. A boot loader below version 2
/// is not trusted to report the revision of hardware 5 or 6.
std::int32_t EffectiveHwRev(std::int32_t index);
/// The revision as the report shows it.
std::string FormatHwRev(std::int32_t revision, std::int32_t index);
/// The status report, each line ended by CR LF. Asks the link library for its version only.
std::string BuildStatusReport();

}  // namespace tarnwick
