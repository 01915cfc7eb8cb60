// The progress display of a run.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick {

/// Where progress shows: a label and a bar on the page, and the frame's caption. The three always
/// travel together.
class IProgress {
 public:
  virtual ~IProgress() = default;
  /// Shows the text over the bar and repaints it at once.
  virtual void Label(const std::string& text) = 0;
  /// Fills the bar to `fraction` (0 to 1) of its track and repaints it at once.
  virtual void Bar(double fraction) = 0;
  /// Sets the frame's caption.
  virtual void Caption(const std::string& text) = 0;
};

/// Shows `position` (a word index) as a share of `gTotalWords`, 0 when that is 0: `text` with the
/// percentage on the label, the bar, and "MC " with the percentage as caption. Pumps events twice.
void ShowProgress(std::string_view text, std::int32_t position, IProgress& progress);

}  // namespace tarnwick
