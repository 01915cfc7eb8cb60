#include "programmer/Compatibility.h"

#include "PackageRules.h"
#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "platform/ui.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

enum class Verdict { Pass, OtherModel, OtherRevision, InvalidChange, ConfirmModel, ConfirmModelAtRisk };

/// The models that are of hardware revision 2 where none can be read.
bool IsOfRevision2(std::int32_t model) {
  return model == 5 || model == 6;
}

/// The package lists the revisions it is for.
Verdict JudgeByList(std::int32_t index) {
  const DeviceEntry& row = gDevices[index];
  const bool listed = PackageHasHwRev(index);
  if (row.State == McState::Running) {
    if (gQAL->ModelNumber() != row.Model) return Verdict::OtherModel;
    return listed ? Verdict::Pass : Verdict::OtherRevision;
  }
  if (listed) return HasBootVersion(row.HwRev) ? Verdict::Pass : Verdict::ConfirmModelAtRisk;
  return LeavesNoOtherRevision(*gQAL, index) ? Verdict::Pass : Verdict::OtherRevision;
}

/// The package lists no revisions: it is for hardware that reports none, or 2 for models 5 and 6.
Verdict JudgeWithoutList(std::int32_t index) {
  const DeviceEntry& row = gDevices[index];
  if (row.State == McState::Running) {
    if (gQAL->ModelNumber() != row.Model) return Verdict::OtherModel;
    const bool fits = row.HwRev == 0 || (row.HwRev == 2 && IsOfRevision2(row.Model));
    return fits ? Verdict::Pass : Verdict::InvalidChange;
  }
  const bool mayFit = row.HwRev == 0 || (row.HwRev == 2 && IsOfRevision2(gQAL->ModelNumber()));
  return mayFit ? Verdict::ConfirmModel : Verdict::InvalidChange;
}

bool Refuse(const std::string& text) {
  ui::MessageBox(text);
  ui::PumpEvents();
  return false;
}

bool Confirm(const std::string& text) {
  if (ui::MessageBox(text, ui::Buttons::YesNo, ui::Icon::Exclamation) == ui::Answer::Yes) return true;
  ui::PumpEvents();
  return false;
}

bool Announce(Verdict verdict, const std::string& prefix) {
  const std::string warning = prefix + std::string(kModelUnknown);
  switch (verdict) {
    case Verdict::Pass:
      return true;
    case Verdict::OtherModel:
      return Refuse(prefix + "Model number doesn't match QAL file Model Number");
    case Verdict::OtherRevision:
      return Refuse(prefix + std::string(kOtherRevision));
    case Verdict::InvalidChange:
      return Refuse(prefix + "Invalid Change in Hardware Revision ");
    case Verdict::ConfirmModel:
      return Confirm(warning + std::string(kContinue));
    case Verdict::ConfirmModelAtRisk:
      return Confirm(warning + std::string(kAtRisk) + std::string(kContinue));
  }
  return false;
}

}  // namespace

bool CheckCompatibility(std::int32_t index) {
  ReadDeviceState(index);
  ReadDeviceHwRev(index);
  if (!ComparesPackages()) return true;
  const Verdict verdict = gQAL->HwRevCount() >= 1 ? JudgeByList(index) : JudgeWithoutList(index);
  return Announce(verdict, "[" + gDevices[index].Name + "] ");
}

bool ComparesPackages() {
  return !gModelOverride && gDeviceClass == 0;
}

bool LeavesNoOtherRevision(const QALclass& package, std::int32_t index) {
  return HasBootVersion(gDevices[index].HwRev) && EffectiveHwRev(index) == 0 && package.HwRevCount() == 1 &&
         HasBootVersion(package.HwRevValue(1));
}

bool ListsHwRev(const QALclass& package, std::int32_t index) {
  const std::int32_t revision = EffectiveHwRev(index);
  for (std::int32_t k = 1; k <= package.HwRevCount(); ++k) {
    if (package.HwRevValue(k) == revision) return true;
  }
  return false;
}

bool PackageHasHwRev(std::int32_t index) {
  return ListsHwRev(*gQAL, index);
}

void MatchPackageDevices() {
  for (DeviceEntry& row : gDevices) {
    row.QalIndex = 0;
    for (std::int32_t k = 1; k <= gQAL->Devices() && row.QalIndex == 0; ++k) {
      if (gQAL->DeviceAddress(k) == row.Address) row.QalIndex = k;
    }
  }
}

std::string ErrorText(const QALclass& package) {
  return "Error " + std::to_string(package.LastError()) + " : " + package.LastErrorMessage() + " at Line " +
         std::to_string(package.LastErrorLine());
}

std::string PackageErrorText() {
  return ErrorText(*gQAL);
}

std::string ChosenPackageRefusal(const QalIdentity& chosen) {
  if (gQAL->ErrorsFound()) return PackageErrorText();
  if (gQAL->Identity() == chosen) return {};
  return "The package is no longer the one that was chosen";
}

std::string ImageRefusal(std::int32_t index) {
  if (gQAL->ErrorsFound()) return PackageErrorText();
  const DeviceEntry& row = gDevices[index];
  return row.QalIndex >= 1 && row.QalIndex <= gQAL->Devices() ? std::string() : std::string(kNoMatch);
}

}  // namespace tarnwick
