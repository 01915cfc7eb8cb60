// What became of each device of a run, and what its owner does next.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick {

/// How a run ended for one row.
enum class RowEnd {
  NotReached,  ///< The run ended before its turn.
  Refused,     ///< A check before the first byte ended the run. Nothing was changed.
  NotBegun,    ///< Its turn had come, and no block of its firmware was sent.
  Stopped,     ///< Blocks were sent, but not all, or the device did not confirm them.
  Written,
};

struct RowOutcome {
  std::int32_t Row = 0;
  RowEnd End = RowEnd::NotReached;
  bool BootPackage = false;   ///< `Percent` is of the boot package, not of the firmware.
  std::int32_t Percent = 0;   ///< How much was sent when it stopped.
  bool PackageLost = false;   ///< The package is no longer there as it was chosen.
  bool LoaderUntold = false;  ///< Written without knowing whether the boot loader is outdated.
  double Version = 0.0;       ///< What was written.
};

/// Where the outcome is read: on the page that it happened on, which stays, or behind a command that has ended.
enum class Reader { Page, Command };

/// The outcome in a line, by the row's state as it was last read: "ALT(DEC) Motor: 5.12 written, running", or
/// how far it got and what to do next. A motor that does not run is named with what it last told of itself.
std::string OutcomeText(const RowOutcome& outcome, Reader reader = Reader::Page);

}  // namespace tarnwick
