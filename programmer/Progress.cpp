#include "programmer/Progress.h"

#include "platform/text.h"
#include "platform/ui.h"
#include "programmer/modProgrammer.h"

namespace tarnwick {

void ShowProgress(std::string_view text, std::int32_t position, IProgress& progress) {
  const double fraction = gTotalWords == 0 ? 0.0 : static_cast<double>(position) / gTotalWords;
  const std::string percentage = std::to_string(text::ToInt32(fraction * 100)) + "%";
  progress.Label(std::string(text) + percentage);
  ui::PumpEvents();
  progress.Bar(fraction);
  progress.Caption("MC " + percentage);
  ui::PumpEvents();
}

}  // namespace tarnwick
