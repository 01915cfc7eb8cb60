#include "programmer/ProgrammingRun.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "PackageRules.h"
#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "link/LastSeen.h"
#include "platform/awake.h"
#include "platform/record.h"
#include "platform/ui.h"
#include "programmer/BootLoader.h"
#include "programmer/Compatibility.h"
#include "programmer/ProgramDevice.h"
#include "programmer/RunRecord.h"
#include "programmer/UnfinishedRun.h"
#include "programmer/modProgrammer.h"

namespace tarnwick {
namespace {

constexpr std::string_view kComplete =
    "Programming Complete\r\n\r\n"
    "Cycle the power on the telescope at this point, then press Ok.\r\n"
    "The controller(s) programmed should then be in Running State and\r\n"
    "the proper Version displayed.";

/// The revision of a boot loader that cannot be believed was settled by the package, which nobody held
/// against the device: only a package that leaves no choice may decide which boot loader is written.
bool IsGuess() {
  return !ComparesPackages() && !(gQAL->HwRevCount() == 1 && HasBootVersion(gQAL->HwRevValue(1)));
}

/// The boot loader need not be asked only because the device was not heard: one of revision 2 whose words
/// could not be read, and one that told a revision before and none now.
bool WasToTell(const DeviceEntry& row) {
  const std::int32_t seen = LastSeen(row.Address).HwRev;
  return row.HwRev == 2 || (row.HwRev == 0 && (seen == 2 || HasBootVersion(seen)));
}

void ForgetGuess(DeviceEntry& row, const DeviceEntry& before) {
  row.HwRev = before.HwRev;
  row.HwRevApp = before.HwRevApp;
  row.HwRevBoot = before.HwRevBoot;
}

}  // namespace

/// Keeps the record of how far the image of one row got, beside what the page shows of it.
class ProgrammingRun::Watch final : public IProgress {
 public:
  Watch(IProgress& shown, RowOutcome& outcome) : mShown(shown), mOutcome(outcome), mNote(outcome.Row) {}

  void Label(const std::string& text) override { mShown.Label(text); }
  void Bar(double fraction) override { mShown.Bar(fraction); }
  void Waiting(const std::string& what) override { mShown.Waiting(what); }
  void Caption(const std::string& text) override { mShown.Caption(text); }
  void Rest() override { mShown.Rest(); }
  void Busy(bool busy) override { mShown.Busy(busy); }
  void Status() override { mShown.Status(); }
  /// An image is about to be written: from here on the device may be brought out of its firmware.
  void Beginning() { mNote.Keep(mOutcome); }
  void Sending(std::int32_t word) override {
    mOutcome.End = RowEnd::Stopped;
    mOutcome.Percent = gTotalWords == 0 ? 0 : word * 100 / gTotalWords;
    mNote.Keep(mOutcome);
  }

 private:
  IProgress& mShown;
  RowOutcome& mOutcome;
  UnfinishedNote mNote;
};

ProgrammingRun::ProgrammingRun(std::vector<std::int32_t> rows, bool together, QalIdentity judged)
    : mTogether(together), mJudged(judged) {
  for (const std::int32_t row : rows) mOutcomes.push_back({.Row = row});
}

void ProgrammingRun::Execute(IProgress& progress) {
  const RunRecord inRecord("programming", Rows());
  gProgramming = true;
  gCancelProgram = false;
  std::optional<awake::Hold> hold(std::in_place);
  progress.Busy(true);
  bool ok = Check();
  LockHandControl();
  const auto count = static_cast<std::int32_t>(mOutcomes.size());
  std::int32_t number = 0;
  ok = ok && std::all_of(mOutcomes.begin(), mOutcomes.end(), [&](RowOutcome& outcome) {
         progress.Turn(outcome.Row, ++number, count);
         Watch watch(progress, outcome);
         return ProgramRow(outcome, watch);
       });
  hold.reset();
  gProgramming = false;
  progress.Busy(false);
  progress.Status();
  ForgetUntouched();
  for (const RowOutcome& outcome : mOutcomes) record::Line("outcome: " + OutcomeText(outcome));
  if (gCancelProgram || !ok) return;
  ui::MessageBox(kComplete, ui::Buttons::Ok, ui::Icon::Information);
  progress.Status();
  ui::PumpEvents();
}

/// A motor that was to be written, was not, and runs, needs no note.
void ProgrammingRun::ForgetUntouched() const {
  for (const RowOutcome& outcome : mOutcomes) {
    const DeviceEntry& row = gDevices[outcome.Row];
    if (outcome.End == RowEnd::NotBegun && row.State == McState::Running) ForgetUnfinished(row.Address);
  }
}

std::vector<std::int32_t> ProgrammingRun::Rows() const {
  std::vector<std::int32_t> rows;
  for (const RowOutcome& outcome : mOutcomes) rows.push_back(outcome.Row);
  return rows;
}

bool ProgrammingRun::Check() {
  const bool ok = !RefuseTogether() && !RefusePackage() &&
                  std::all_of(mOutcomes.begin(), mOutcomes.end(),
                              [](const RowOutcome& outcome) { return CheckCompatibility(outcome.Row); });
  if (ok) return true;
  const bool lost = !ChosenPackageRefusal(mJudged).empty();
  for (RowOutcome& outcome : mOutcomes) {
    outcome.End = RowEnd::Refused;
    outcome.PackageLost = lost;
  }
  return false;
}

/// Asks no device: the table's values are used as they stand.
bool ProgrammingRun::RefuseTogether() const {
  const bool refused =
      mTogether && std::any_of(mOutcomes.begin(), mOutcomes.end(), [](const RowOutcome& each) {
        const DeviceEntry& row = gDevices[each.Row];
        return row.Model == 1 && row.Version == 3.0;
      });
  if (refused) ui::MessageBox("Cannot Program more than one device at a time with V3.0");
  return refused;
}

bool ProgrammingRun::RefusePackage() const {
  std::string refusal = ChosenPackageRefusal(mJudged);
  for (const RowOutcome& outcome : mOutcomes) {
    if (refusal.empty()) refusal = ImageRefusal(outcome.Row);
  }
  if (refusal.empty() && mOutcomes.empty()) refusal = kNoMatch;
  if (!refusal.empty()) ui::MessageBox(refusal);
  return !refusal.empty();
}

bool ProgrammingRun::ProgramRow(RowOutcome& outcome, Watch& watch) {
  if (gCancelProgram) return false;
  outcome.End = RowEnd::NotBegun;
  if (!RenewBootLoader(outcome, watch)) {
    outcome.PackageLost = !ChosenPackageRefusal(mJudged).empty();
    return false;
  }
  if (gCancelProgram) return false;
  watch.Beginning();
  const bool written = ProgramDevice(outcome.Row, "Programming: ", watch);
  watch.Rest();
  if (!written) return false;
  const DeviceEntry& row = gDevices[outcome.Row];
  outcome.End = RowEnd::Written;
  outcome.Version = gQAL->DeviceVersion(row.QalIndex);
  ForgetUnfinished(row.Address);
  return true;
}

/// True when the boot loader is, or now is, one that the firmware can go with.
bool ProgrammingRun::RenewBootLoader(RowOutcome& outcome, Watch& watch) {
  DeviceEntry& row = gDevices[outcome.Row];
  const DeviceEntry before = row;
  const BootLoaderCheck check = CheckBootLoader(outcome.Row);
  if (check == BootLoaderCheck::NoAnswer) return false;
  outcome.LoaderUntold = check == BootLoaderCheck::NotNeeded && WasToTell(row);
  if (check != BootLoaderCheck::Outdated) return true;
  if (HasBootVersion(before.HwRev) && before.HwRevApp == 0 && IsGuess()) {
    ForgetGuess(row, before);
    ui::MessageBox("[" + row.Name + "] " + std::string(kOtherRevision));
    return false;
  }
  if (gCancelProgram) return false;
  outcome.BootPackage = true;
  watch.Beginning();
  const bool renewed = UpgradeBootLoader(outcome.Row, "Upgrading BootLoader: ", gQAL->RealFilename(), watch);
  watch.Rest();
  if (!renewed) return false;
  outcome.BootPackage = false;
  outcome.Percent = 0;
  outcome.End = RowEnd::NotBegun;
  return true;
}

}  // namespace tarnwick
