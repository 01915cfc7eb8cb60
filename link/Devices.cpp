#include "link/Devices.h"

#include <array>
#include <initializer_list>

#include "link/LastSeen.h"
#include "link/LinkLibrary.h"
#include "platform/program.h"
#include "platform/text.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

constexpr const char* kUnknown = "Unknown";

struct ClassRow {
  std::int32_t address;
  const char* name;
};
constexpr std::array<std::array<ClassRow, 2>, 2> kClassRows{{
    {{{16, "AZM(RA) Motor"}, {17, "ALT(DEC) Motor"}}},
    {{{18, "Focuser Motor"}, {19, "FDR Motor"}}},
}};

/// Names of the motor control models, by number.
// clang-format off
constexpr std::array<const char*, 16> kMotorModels{
    kUnknown,          "Vendral Kest", "Vendral Kest-B", "Vendral Lorn",
    "Vendral Mirel",   "Vendral Corvane", "Brenmark RX", "Vendral Ossil",
    "QF3",             "Dorvak Series", kUnknown,        "Vendral Mirel A",
    "Vendral Mirel B", "Corvane Pro",  "CORVANEM",       "NQT"};
// clang-format on

/// Names of the run states, by number.
constexpr std::array<const char*, 4> kStates{"No Response", "Running", "Boot Mode", "Program"};

template <std::size_t N>
const char* NameIn(const std::array<const char*, N>& names, std::int32_t number) {
  return number >= 0 && static_cast<std::size_t>(number) < N ? names[static_cast<std::size_t>(number)]
                                                             : kUnknown;
}

bool InBootLoader(const DeviceEntry& device) {
  return device.State == McState::BootMode || device.State == McState::Program;
}

/// The lines of a report, each with its end.
std::string Lines(std::initializer_list<std::string> lines) {
  std::string joined;
  for (const std::string& line : lines) joined.append(line).append(text::kLineEnd);
  return joined;
}

std::string ReportOf(std::int32_t index) {
  const DeviceEntry& device = gDevices[index];
  return Lines({
      "Device: " + device.Name,
      "    State: " + device.StateName,
      "    Model: " + device.ModelName,
      "    Address: " + std::to_string(device.Address),
      "    Version: " + (device.Version == 0.0 ? kUnknown : text::Fixed2(device.Version)),
      "    HwRev: " + FormatHwRev(EffectiveHwRev(index), index),
      "",
  });
}

}  // namespace

DeviceTable gDevices;
std::int32_t gDeviceClass = 0;

std::string ModelNameOf(std::int32_t model) {
  if (gDeviceClass == 0) return NameIn(kMotorModels, model);
  return gDeviceClass == 1 && model == 1 ? "Focuser Accessory" : kUnknown;
}

std::int32_t gDeviceCount() {
  return gDevices.Count();
}

void SetupDevices(std::int32_t deviceClass) {
  if (deviceClass < 0 || static_cast<std::size_t>(deviceClass) >= kClassRows.size()) return;
  std::vector<DeviceEntry> rows;
  for (const ClassRow& row : kClassRows[static_cast<std::size_t>(deviceClass)]) {
    DeviceEntry device;
    device.Address = row.address;
    device.Name = row.name;
    rows.push_back(std::move(device));
  }
  gDevices.Assign(std::move(rows));
}

void RefreshDevice(std::int32_t index) {
  DeviceEntry& device = gDevices[index];
  device.Model = 0;
  device.ModelName = kUnknown;
  device.BootVersion = 0;
  device.Version = 0.0;
  ReadDeviceState(index);
  ReadDeviceHwRev(index);
  if (HasBootVersion(device.HwRev)) ReadBootVersion(index);
  if (device.State == McState::Running) {
    ReadModelNumber(device.Address, device.Model);
    device.ModelName = ModelNameOf(device.Model);
  }
  NoteSeen(index);
}

void RefreshDevices() {
  for (std::int32_t index = 1; index <= gDeviceCount(); ++index) RefreshDevice(index);
}

void ForgetRevisions(std::int32_t index) {
  DeviceEntry& device = gDevices[index];
  device.HwRev = device.HwRevApp = device.HwRevBoot = 0;
}

bool HasBootVersion(std::int32_t revision) {
  return revision == 5 || revision == 6;
}

void ReadDeviceState(std::int32_t index) {
  DeviceEntry& device = gDevices[index];
  std::int32_t major = 0;
  std::int32_t minor = 0;
  const std::int32_t state = Link().getMcStateCommon(device.Address, major, minor);
  device.State = state >= 0 && state <= 3 ? static_cast<McState>(state) : McState::Unknown;
  device.StateName = NameIn(kStates, state);
  if (device.State == McState::Running) device.Version = minor / 100.0 + major;
}

void ReadDeviceHwRev(std::int32_t index) {
  DeviceEntry& device = gDevices[index];
  std::int32_t revision = 0;
  std::int32_t result = 0;
  if (device.State == McState::Running) {
    result = Link().getHwRevCommon(device.Address, revision);
    device.HwRevApp = revision;
  } else if (InBootLoader(device)) {
    result = Link().getHwRevFromBootCommon(device.Address, revision);
    device.HwRevBoot = revision;
  }
  device.HwRev = result == 0 ? 0 : revision;
}

void ReadBootVersion(std::int32_t index) {
  DeviceEntry& device = gDevices[index];
  if (!InBootLoader(device)) return;
  std::int32_t version = 0;
  if (Link().getVersionFromBootCommon(device.Address, version) == 0) device.BootVersion = version;
}

bool ReadModelNumber(std::int32_t address, std::int32_t& model) {
  std::int32_t answer = 0;
  const std::int32_t result = Link().getModelCommon(static_cast<std::int16_t>(address), answer);
  if ((result & 0xFFFF) != 1) return false;
  model = answer;
  return true;
}

std::int32_t EffectiveHwRev(std::int32_t index) {
  const DeviceEntry& device = gDevices[index];
  if (!HasBootVersion(device.HwRev)) return device.HwRev;
  if (device.HwRevApp != 0) return device.HwRevApp;
  return device.BootVersion >= 2 ? device.HwRevBoot : 0;
}

std::string FormatHwRev(std::int32_t revision, std::int32_t index) {
  if (revision != 0) return std::to_string(revision);
  switch (gDevices[index].Model) {
    case 1:
    case 3:
      return "1";
    case 5:
    case 6:
      return "2";
    default:
      return kUnknown;
  }
}

std::string BuildStatusReport() {
  std::string report;
  if (gComPort.empty()) {
    report = Lines({"No COM port specified!", ""});
  } else {
    for (std::int32_t index = 1; index <= gDeviceCount(); ++index) report += ReportOf(index);
  }
  const auto [major, minor, build] = Link().getDllVersion();
  const std::string library =
      std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(build);
  return report + Lines({"EXE Version: " + program::VersionText(), "DLL Version: " + library});
}

}  // namespace tarnwick
