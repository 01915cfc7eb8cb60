// How a run shows itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick {

/// Where a run of programming or verifying shows: the page that it was begun on, or whatever stands for it.
class IProgress {
 public:
  virtual ~IProgress() = default;
  /// Shows the text over the bar and repaints it at once.
  virtual void Label(const std::string& text) = 0;
  /// Fills the bar to `fraction` (0 to 1) of its track and repaints it at once.
  virtual void Bar(double fraction) = 0;
  /// Shows beside the text what the next call may take seconds for, and repaints it at once; empty for
  /// nothing any more.
  virtual void Waiting(const std::string& /*what*/) {}
  /// Sets the frame's caption.
  virtual void Caption(const std::string& text) = 0;
  /// Puts the frame back as it is at rest, after the last display of one device: its own caption, and the
  /// terminate button live.
  virtual void Rest() = 0;
  /// The terminate button stops a run from now on (true), or leaves the program (false).
  virtual void Busy(bool busy) = 0;
  /// Reads every device anew and shows the status report.
  virtual void Status() = 0;
  /// The work on row `row` of `gDevices` begins, which is number `number`, from 1, of `count` chosen ones.
  virtual void Turn(std::int32_t /*row*/, std::int32_t /*number*/, std::int32_t /*count*/) {}
  /// The block at `word` is about to be sent. Shows nothing; for those who keep a record.
  virtual void Sending(std::int32_t /*word*/) {}
};

/// Shows `position` (a word index) as a share of `gTotalWords`, 0 when that is 0: `text` with the
/// percentage on the label, the bar, and "MC " with the percentage as caption. Pumps events twice.
void ShowProgress(std::string_view text, std::int32_t position, IProgress& progress);

}  // namespace tarnwick
