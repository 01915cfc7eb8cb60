#include "wizard/PageWindow.h"

#include "widgets/Scale.h"

namespace tarnwick {

PageWindow::PageWindow(int widthTwips, int heightTwips) {
  setFixedSize(TwipsToPixels(widthTwips), TwipsToPixels(heightTwips));
}

}  // namespace tarnwick
