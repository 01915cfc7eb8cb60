#include "programmer/PackageFit.h"

#include <algorithm>
#include <string_view>

#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

constexpr std::string_view kWrongModel = "QAL file Model doesn't match Model on Motor Controller!";
constexpr std::string_view kWrongHwRev = "QAL file HwRev doesn't match Model on Motor Controller!";
constexpr std::string_view kModelUnknown =
    "Warning: Motor Controller model can not be determined.\r\n\r\n"
    "Ensure that the appropriate firmware is selected for the device being upgraded.\r\n\r\n"
    "Choosing an incorrect model can cause the mount to become unusable --\r\n\r\n"
    "contact Halcyrion technical support if you are unsure.\r\n\r\n"
    "Do you wish to continue?";

/// Revisions with a boot loader of their own, whose firmware must not be mixed up.
bool IsJudgedRevision(std::int32_t revision) { return revision == 5 || revision == 6; }

/// A device whose true revision cannot be told passes only for a package that leaves no choice.
bool ListsOneJudgedRevision() { return gQAL->HwRevCount() == 1 && IsJudgedRevision(gQAL->HwRevValue(1)); }

enum class RowVerdict { Fits, Undetermined, WrongModel, WrongHwRev };

RowVerdict JudgeRow(std::int32_t row) {
  const DeviceEntry& device = gDevices[row];
  const bool inPackage = device.QalIndex != 0;
  if (inPackage && device.Model != 0 && !gModelOverride && device.Model != gQAL->ModelNumber()) {
    return RowVerdict::WrongModel;
  }
  if (gTypeOverride || !inPackage || !IsJudgedRevision(device.HwRev)) return RowVerdict::Fits;
  if (PackageHasHwRev(row)) return device.Model == 0 ? RowVerdict::Undetermined : RowVerdict::Fits;
  const bool passes = EffectiveHwRev(row) == 0 && ListsOneJudgedRevision();
  return passes ? RowVerdict::Undetermined : RowVerdict::WrongHwRev;
}

bool Refuse(std::string_view text) {
  ui::MessageBox(text);
  return false;
}

}  // namespace

bool PackageFits() {
  if (gQAL->ErrorsFound()) return Refuse(PackageErrorText());
  MatchPackageDevices();
  const auto inPackage = [](const DeviceEntry& device) { return device.QalIndex != 0; };
  if (std::none_of(gDevices.begin(), gDevices.end(), inPackage)) {
    return Refuse("No matching devices found in firmware file");
  }
  int undetermined = 0;
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    switch (JudgeRow(row)) {
      case RowVerdict::WrongModel: return Refuse(kWrongModel);
      case RowVerdict::WrongHwRev: return Refuse(kWrongHwRev);
      case RowVerdict::Undetermined: ++undetermined; break;
      case RowVerdict::Fits: break;
    }
  }
  if (gTypeOverride || undetermined != 2) return true;
  return ui::MessageBox(kModelUnknown, ui::Buttons::YesNo, ui::Icon::Exclamation) == ui::Answer::Yes;
}

}  // namespace tarnwick
