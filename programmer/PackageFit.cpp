#include "programmer/PackageFit.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "PackageRules.h"
#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

constexpr std::string_view kWrongModel = "QAL file Model doesn't match Model on Motor Controller!";
constexpr std::string_view kWrongHwRev = "QAL file HwRev doesn't match Model on Motor Controller!";

enum class RowVerdict { Fits, Undetermined, WrongModel, WrongHwRev };

RowVerdict JudgeRow(std::int32_t row) {
  const DeviceEntry& device = gDevices[row];
  const bool inPackage = device.QalIndex != 0;
  if (inPackage && device.Model != 0 && !gModelOverride && device.Model != gQAL->ModelNumber()) {
    return RowVerdict::WrongModel;
  }
  if (gTypeOverride || !inPackage || !HasBootVersion(device.HwRev)) return RowVerdict::Fits;
  if (PackageHasHwRev(row)) return device.Model == 0 ? RowVerdict::Undetermined : RowVerdict::Fits;
  return LeavesNoOtherRevision(row) ? RowVerdict::Undetermined : RowVerdict::WrongHwRev;
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
    return Refuse(kNoMatch);
  }
  int undetermined = 0;
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    switch (JudgeRow(row)) {
      case RowVerdict::WrongModel:
        return Refuse(kWrongModel);
      case RowVerdict::WrongHwRev:
        return Refuse(kWrongHwRev);
      case RowVerdict::Undetermined:
        ++undetermined;
        break;
      case RowVerdict::Fits:
        break;
    }
  }
  if (gTypeOverride || undetermined != 2) return true;
  const std::string question = std::string(kModelUnknown).append(kAtRisk).append(kContinue);
  return ui::MessageBox(question, ui::Buttons::YesNo, ui::Icon::Exclamation) == ui::Answer::Yes;
}

}  // namespace tarnwick
