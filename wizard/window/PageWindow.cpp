#include "wizard/PageWindow.h"

#include "Scale.h"

namespace tarnwick {

int TwipsToPixels(int twips) {
  return Scaled(twips / 15.0);
}

PageWindow::PageWindow(int widthTwips, int heightTwips) {
  setFixedSize(TwipsToPixels(widthTwips), TwipsToPixels(heightTwips));
}

}  // namespace tarnwick
