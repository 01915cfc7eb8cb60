#include "programmer/RunOutcome.h"

#include "link/Devices.h"
#include "link/LastSeen.h"
#include "platform/text.h"
#include "programmer/Advice.h"

namespace tarnwick {
namespace {

/// Runs, and yet did not tell what it told before: it was not heard.
bool WasNotHeard(const DeviceEntry& row) {
  const SeenDevice& seen = LastSeen(row.Address);
  return row.State == McState::Running &&
         ((row.HwRev == 0 && seen.HwRev != 0) || (row.Model == 0 && seen.Model != 0));
}

bool TellsNoRevision(std::int32_t index) {
  return HasBootVersion(gDevices[index].HwRev) && EffectiveHwRev(index) == 0;
}

/// What to do about a motor whose firmware is not written.
std::string_view WayOn(const RowOutcome& outcome) {
  const McState state = gDevices[outcome.Row].State;
  if (outcome.PackageLost) return advice::kChooseAgain;
  if (state <= McState::NoResponse || WasNotHeard(gDevices[outcome.Row])) return advice::kAskAgain;
  if (outcome.End == RowEnd::Refused) return {};  // The message told why, and its advice holds.
  if (TellsNoRevision(outcome.Row)) return advice::kNameRevision;
  const bool whole = state == McState::Running && outcome.End == RowEnd::NotReached;
  return whole ? std::string_view() : advice::kBeginAgain;
}

/// The advice of the page, as it is for who reads it.
std::string For(Reader reader, std::string_view way) {
  if (reader == Reader::Page || way.empty()) return std::string(way);
  if (way == advice::kCyclePower) return std::string(advice::kCommandCyclePower);
  if (way == advice::kOnceMore) return std::string(advice::kCommandOnceMore);
  return std::string(advice::kCommandAgain);
}

std::string WrittenText(const RowOutcome& outcome, Reader reader) {
  const std::string written = text::Fixed2(outcome.Version) + " written";
  if (outcome.LoaderUntold) return written + ". " + For(reader, advice::kOnceMore);
  if (gDevices[outcome.Row].State == McState::Running) return written + ", running";
  return written + ". " + For(reader, advice::kCyclePower);
}

std::string ProgressText(const RowOutcome& outcome) {
  switch (outcome.End) {
    case RowEnd::NotReached:
      return "not touched";
    case RowEnd::Refused:
      return "not changed";
    case RowEnd::NotBegun:
      return "not written";
    default:
      return "stopped at " + std::to_string(outcome.Percent) + " %" +
             (outcome.BootPackage ? " of the boot loader" : "");
  }
}

}  // namespace

std::string OutcomeText(const RowOutcome& outcome, Reader reader) {
  const DeviceEntry& row = gDevices[outcome.Row];
  if (outcome.End == RowEnd::Written) return row.Name + ": " + WrittenText(outcome, reader);
  const std::string seen = row.State == McState::Running ? "" : SeenText(LastSeen(row.Address));
  const std::string name = row.Name + (seen.empty() ? "" : " (last seen: " + seen + ")");
  const std::string_view way = WayOn(outcome);
  return name + ": " + ProgressText(outcome) + (way.empty() ? "." : ". ") + For(reader, way);
}

}  // namespace tarnwick
