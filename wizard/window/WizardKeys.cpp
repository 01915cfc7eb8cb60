// The input of the frame's window: keys pressed and released, wherever the focus is, and what a locked
// page is kept from.
#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QPoint>
#include <QWindow>

#include "wizard/CWizard.h"
#include "wizard/WizardWindow.h"

namespace tarnwick {
namespace {

/// The one key that the window answers itself, as if its Help button were pressed.
constexpr std::int16_t kHelpKey = 112;

/// The key codes that the frame knows; 0 for any other key.
std::int16_t KeyCodeOf(int key) {
  switch (key) {
    case Qt::Key_Escape:
      return 27;
    case Qt::Key_Left:
      return 37;
    case Qt::Key_Right:
      return 39;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return 13;
    case Qt::Key_F1:
      return kHelpKey;
    default:
      return 0;
  }
}

std::int16_t ShiftOf(Qt::KeyboardModifiers modifiers) {
  int shift = 0;
  if (modifiers.testFlag(Qt::ShiftModifier)) shift |= 1;
  if (modifiers.testFlag(Qt::ControlModifier)) shift |= 2;
  if (modifiers.testFlag(Qt::AltModifier)) shift |= 4;
  return static_cast<std::int16_t>(shift);
}

/// Whether the frame acts on the key, so that no control may take it as well.
bool IsForFrame(std::int16_t code, std::int16_t shift) {
  if (code == 27 || code == 13 || code == kHelpKey) return shift == 0;
  return code != 0 && shift == 4;
}

bool IsPointerInput(QEvent::Type type) {
  return type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease ||
         type == QEvent::MouseButtonDblClick || type == QEvent::Wheel;
}

}  // namespace

bool WizardWindow::KeyPressed(int key, Qt::KeyboardModifiers modifiers) {
  mPressed.insert_or_assign(key, modifiers);
  return IsForFrame(KeyCodeOf(key), ShiftOf(modifiers));
}

bool WizardWindow::KeyReleased(int key) {
  const auto found = mPressed.find(key);
  if (found == mPressed.end()) return false;
  const std::int16_t shift = ShiftOf(found->second);
  mPressed.erase(found);
  std::int16_t code = KeyCodeOf(key);
  if (!IsForFrame(code, shift)) return false;
  // A button that has the focus keeps Enter for itself, as everywhere on a desktop.
  auto* const button = qobject_cast<QAbstractButton*>(focusWidget());
  if (code == 13 && button != nullptr && button->isEnabled() && !IsLocked(*button)) {
    button->click();
  } else if (code == kHelpKey) {
    At(FrameButton::cmdHelp).widget->click();
  } else {
    mWizard->TranslateKey(code, shift);
  }
  return true;
}

bool WizardWindow::IsLocked(const QWidget& widget) const {
  return !mPageAreaEnabled && picPage->isAncestorOf(&widget);
}

bool WizardWindow::eventFilter(QObject* watched, QEvent* event) {
  // Caught before the toolkit looks which control is there: a click would give that one the focus.
  if (watched == windowHandle() && IsPointerInput(event->type())) {
    const QPoint at = static_cast<QSinglePointEvent*>(event)->position().toPoint();
    return !mPageAreaEnabled && picPage->geometry().contains(at);
  }
  const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
  if (!isKey && event->type() != QEvent::Shortcut) return false;
  const auto* const widget = qobject_cast<QWidget*>(isKey ? watched : watched->parent());
  if (widget == nullptr || widget->window() != this) return false;
  const bool locked = IsLocked(*widget);
  if (!isKey) return locked;
  const auto* const key = static_cast<QKeyEvent*>(event);
  bool taken = false;
  if (key->isAutoRepeat()) {
    taken = IsForFrame(KeyCodeOf(key->key()), ShiftOf(key->modifiers()));
  } else {
    taken = event->type() == QEvent::KeyPress ? KeyPressed(key->key(), key->modifiers())
                                              : KeyReleased(key->key());
  }
  return taken || locked;
}

bool WizardWindow::event(QEvent* event) {
  // A key held down while another window comes up is let go there or for nothing.
  if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::WindowDeactivate) mPressed.clear();
  return QWidget::event(event);
}

}  // namespace tarnwick
