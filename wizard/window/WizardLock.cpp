// How the frame locks its user out and lets them in again, as one act with the focus.
#include <QApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>

#include "platform/ui.h"
#include "wizard/CWizard.h"
#include "wizard/WizardWindow.h"

namespace tarnwick {

void WizardWindow::BeforeLock() {
  mLocked = true;
  qt::InputGate::Of().LetGo();
  mPressed.clear();
  // Parked on the frame, before buttons go dead one by one: the focus would fall on one that stays live and
  // take the next Space there.
  mFocusBeforeLock = focusWidget();
  setFocus();
}

void WizardWindow::BeforeUnlock() {
  qt::InputGate::Of().Discard();
  mPressed.clear();
}

void WizardWindow::AfterStep() {
  const QScopedValueRollback discards(mDiscards, true);
  BeforeUnlock();
}

void WizardWindow::PageAreaEnabled(bool enabled) {
  if (!enabled) {
    if (picPage->isEnabled() && !mGreying.isActive()) mGreying.start();
    return;
  }
  mGreying.stop();
  picPage->setEnabled(true);
  if (!mLocked) return;
  mLocked = false;
  QWidget* const before = mFocusBeforeLock;
  const bool usable = before != nullptr && before != this && before->isVisible() && before->isEnabled();
  usable ? before->setFocus() : FocusPageArea();
}

void WizardWindow::ShowLock() {
  if (!mLocked) return;
  mGreying.stop();
  picPage->setEnabled(false);
  repaint();
  ui::PumpPainting();
}

bool WizardWindow::IsLockedAt(QPoint place) const {
  if (mDiscards) return true;
  const QPushButton& terminate = *At(FrameButton::cmdTerminate).widget;
  return mLocked && !(terminate.isEnabled() && terminate.geometry().contains(place));
}

bool WizardWindow::IsLockedFor(const QKeyEvent& key) const {
  if ((!mLocked && !mDiscards) || key.key() == Qt::Key_Escape) return false;
  if (mDiscards) return true;
  if (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab) return false;
  return key.key() != Qt::Key_Space || !At(FrameButton::cmdTerminate).widget->hasFocus();
}

bool WizardWindow::focusNextPrevChild(bool next) {
  if (!mLocked) return QWidget::focusNextPrevChild(next);
  QPushButton& terminate = *At(FrameButton::cmdTerminate).widget;
  const bool there = terminate.isEnabled() && !terminate.hasFocus();
  (there ? static_cast<QWidget*>(&terminate) : this)->setFocus();
  return true;
}

}  // namespace tarnwick
