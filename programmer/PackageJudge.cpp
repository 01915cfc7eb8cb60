#include "programmer/PackageJudge.h"

#include <algorithm>

#include "PackageRules.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

using Kind = PackageOpinion::Kind;

bool Holds(const QALclass& package, const DeviceEntry& row) {
  for (std::int32_t k = 1; k <= package.Devices(); ++k) {
    if (package.DeviceAddress(k) == row.Address) return true;
  }
  return false;
}

/// `index` is a row whose device the package holds.
PackageFit JudgeRow(const QALclass& package, std::int32_t index) {
  const DeviceEntry& row = gDevices[index];
  if (row.Model != 0 && !gModelOverride && row.Model != package.ModelNumber()) return PackageFit::WrongModel;
  if (gTypeOverride || !HasBootVersion(row.HwRev)) return PackageFit::Fits;
  if (ListsHwRev(package, index)) return row.Model == 0 ? PackageFit::Undetermined : PackageFit::Fits;
  return LeavesNoOtherRevision(package, index) ? PackageFit::Undetermined : PackageFit::WrongHwRev;
}

/// The first row of which `test` is true, or none.
template <class Test>
const DeviceEntry* FindRow(Test test) {
  const auto found = std::find_if(gDevices.begin(), gDevices.end(), test);
  return found == gDevices.end() ? nullptr : &*found;
}

bool IsKnown(const DeviceEntry& row) {
  return row.Model != 0;
}

std::string OtherModel(const QALclass& package) {
  const DeviceEntry* const row =
      FindRow([&](const DeviceEntry& each) { return IsKnown(each) && each.Model != package.ModelNumber(); });
  return "For another model: " + ModelNameOf(package.ModelNumber()) + "; yours is " +
         (row == nullptr ? std::string() : ModelNameOf(row->Model));
}

std::string OtherRevision(const QALclass& package) {
  return package.HwRevCount() == 0 ? "For other hardware: it names no revision"
                                   : "For other hardware: revision " + package.HwRev();
}

}  // namespace

PackageFit JudgeFit(const QALclass& package) {
  int undetermined = 0;
  bool any = false;
  for (std::int32_t index = 1; index <= gDeviceCount(); ++index) {
    if (!Holds(package, gDevices[index])) continue;
    any = true;
    const PackageFit fit = JudgeRow(package, index);
    if (fit != PackageFit::Fits && fit != PackageFit::Undetermined) return fit;
    undetermined += fit == PackageFit::Undetermined ? 1 : 0;
  }
  if (!any) return PackageFit::NoDevice;
  return !gTypeOverride && undetermined == 2 ? PackageFit::Undetermined : PackageFit::Fits;
}

PackageOpinion PackageJudge::Judge(const std::filesystem::path& package) {
  mPackage.LoadQALfile(package);
  if (mPackage.ErrorsFound()) return {Kind::DoesNotFit, "Cannot be used: " + mPackage.LastErrorMessage()};
  const auto answers = [](const DeviceEntry& row) { return row.State != McState::NoResponse; };
  if (gComPort.empty() || FindRow(answers) == nullptr) return {Kind::MayFit, "No mount to compare it with"};
  switch (JudgeFit(mPackage)) {
    case PackageFit::NoDevice:
      return {Kind::DoesNotFit, "For other devices"};
    case PackageFit::WrongModel:
      return {Kind::DoesNotFit, OtherModel(mPackage)};
    case PackageFit::WrongHwRev:
      return {Kind::DoesNotFit, OtherRevision(mPackage)};
    case PackageFit::Undetermined:
    case PackageFit::Fits:
      break;
  }
  const auto known = [&](const DeviceEntry& row) { return IsKnown(row) && Holds(mPackage, row); };
  if (FindRow(known) == nullptr)
    return {Kind::MayFit,
            "Your mount cannot tell its model; the package is for " + ModelNameOf(mPackage.ModelNumber())};
  return {Kind::Fits, "Fits your mount"};
}

}  // namespace tarnwick
