// The keys of the frame's window, wherever the focus is.
#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QWindow>
#include <algorithm>

#include "wizard/CWizard.h"
#include "wizard/WizardWindow.h"

namespace tarnwick {
namespace {

/// The one key that the window answers itself, as if its Help button were pressed.
constexpr std::int16_t kHelpKey = 112;
constexpr std::int16_t kEnterKey = 13;

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
      return kEnterKey;
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
  if (code == 27 || code == kEnterKey || code == kHelpKey) return shift == 0;
  return code != 0 && shift == 4;
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
  if (code == kEnterKey) {
    PressEnter();
  } else if (code == kHelpKey) {
    At(FrameButton::cmdHelp).widget->click();
  } else {
    mWizard->TranslateKey(code, shift);
  }
  return true;
}

void WizardWindow::PressEnter() {
  const auto focused = std::find_if(mButtons.begin(), mButtons.end(),
                                    [](const Button& each) { return each.widget->hasFocus(); });
  if (focused != mButtons.end()) return focused->widget->click();
  std::int16_t code = kEnterKey;
  mWizard->TranslateKey(code, 0);
}

/// A window that moved under the pointer, and the pointer with it, as a step does: the toolkit takes the pointer to
/// be where it was in the window, until it moves again.
bool WizardWindow::IsElsewhere(const QPushButton& button) {
  return !button.rect().contains(button.mapFromGlobal(QCursor::pos()));
}

bool WizardWindow::eventFilter(QObject* watched, QEvent* event) {
  const auto* const button = qobject_cast<const QPushButton*>(watched);
  if (button != nullptr) return event->type() == QEvent::ToolTip && IsElsewhere(*button);
  const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
  if (watched != windowHandle() || !isKey || QApplication::activePopupWidget() != nullptr) return false;
  const auto* const key = static_cast<QKeyEvent*>(event);
  if (key->isAutoRepeat()) return false;
  return event->type() == QEvent::KeyPress ? KeyPressed(key->key(), key->modifiers())
                                           : KeyReleased(key->key());
}

}  // namespace tarnwick
