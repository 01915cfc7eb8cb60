// What every page of this program is: a page of the wizard and a window of its own.
#pragma once

#include <QWidget>

#include "wizard/IWizardPage.h"

namespace tarnwick {

/// The height, in twips, that the frame's picture leaves to a page. Pages with tables, which need 2715 at least,
/// take all of it.
inline constexpr int kRoomTwips = 3390;

/// The base class of the pages. Its controls come into being in `Form_Load`, at its first show.
class PageWindow : public QWidget, public IWizardPage {
 public:
  /// Client size in twips.
  PageWindow(int widthTwips, int heightTwips);

  /// Makes the controls. Called once by the frame, before the page's first `BeforePageShow`.
  virtual void Form_Load() = 0;
  /// Runs when the wizard is taken down.
  virtual void Form_Unload() {}
  /// The control that has the focus when the page comes into view; none for the page itself.
  virtual QWidget* FirstControl() { return nullptr; }
};

}  // namespace tarnwick
