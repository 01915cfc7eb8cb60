#include "wizard/FrameLayout.h"

namespace tarnwick {

FrameLayout LayOut(FrameSize splash, FrameSize button, FrameSize page) {
  constexpr std::int32_t kEdge = 4;
  constexpr std::int32_t kRowSlack = 30;  // What the button row needs beside its three right buttons.

  FrameLayout layout;
  layout.picSplash = {kEdge, kEdge, splash.width, splash.height};
  layout.picPage = {layout.picSplash.Right() + 6, 2, page.width + 2, page.height + 2};

  const std::int32_t need = 3 * button.width + kRowSlack;
  const std::int32_t right = MaxOf(need, layout.picPage.Right());
  const std::int32_t bottom = MaxOf(layout.picSplash.Bottom(), layout.picPage.Bottom()) + 6;
  layout.bevelLeft = kEdge;
  layout.bevelRight = right + 3;
  layout.bevelTop = bottom;

  const std::int32_t rowRight = right + 4;
  const std::int32_t rowTop = bottom + 8;
  const auto placed = [&](std::int32_t left) { return FrameRect{left, rowTop, button.width, button.height}; };
  layout.cmdHelp = placed(kEdge);
  layout.cmdTerminate = placed(rowRight - button.width - 2);
  layout.cmdStepFwd = placed(layout.cmdTerminate.left - 10 - button.width);
  layout.cmdStepBack = placed(layout.cmdStepFwd.left - 2 - button.width);

  layout.client = {rowRight + 4, rowTop + 2 + button.height + 6};
  return layout;
}

}  // namespace tarnwick
