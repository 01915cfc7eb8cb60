#include "platform/qt/InputGate.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QMouseEvent>

#include "platform/clock.h"
#include "platform/ui.h"

namespace tarnwick::qt {
namespace {

constexpr quint64 kRepeatWithin = 60;
constexpr std::chrono::milliseconds kReading{300};
/// Where a press is let go that means nothing any more: on nothing.
constexpr QPointF kNowhere{-10000, -10000};

QWidget* WidgetOf(const QWindow& window) {
  const auto all = QApplication::topLevelWidgets();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](QWidget* each) { return each->windowHandle() == &window; });
  return found == all.end() ? nullptr : *found;
}

bool IsModifier(int key) {
  return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_AltGr ||
         key == Qt::Key_Meta;
}

bool Moves(int key) {
  return key == Qt::Key_Tab || key == Qt::Key_Backtab || (key >= Qt::Key_Home && key <= Qt::Key_PageDown);
}

}  // namespace

InputGate& InputGate::Of() {
  static QPointer<InputGate> gate;
  if (gate == nullptr) gate = new InputGate(qApp);
  return *gate;
}

InputGate::InputGate(QObject* application) : QObject(application) {
  application->installEventFilter(this);
}

void InputGate::Watch(QWidget& window, const ILockable& locks) {
  mLocks[&window] = &locks;
  connect(&window, &QObject::destroyed, this, [this, gone = &window] { mLocks.erase(gone); });
}

void InputGate::HoldsBack(QWidget& box) {
  mBox = {.window = &box, .painted = false, .since = std::nullopt};
}

void InputGate::Discard() {
  QGuiApplication::sync();  // What the window system knows of already arrives now.
  ui::PumpEvents();
  LetGo();
}

bool InputGate::eventFilter(QObject* watched, QEvent* event) {
  Seen(*watched, event->type());
  if (!watched->isWindowType() || mTakingBack) return false;
  QWindow& window = *static_cast<QWindow*>(watched);
  switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
      if (KeyDown(window, *static_cast<QKeyEvent*>(event))) return false;
      event->accept();  // Else a shortcut would be looked for.
      return true;
    case QEvent::KeyRelease:
      return !KeyUp(window, *static_cast<QKeyEvent*>(event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      return !ButtonDown(window, *static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
      return !ButtonUp(window, *static_cast<QMouseEvent*>(event));
    case QEvent::Wheel:
      return IsLockedAt(window, static_cast<QWheelEvent*>(event)->position().toPoint());
    case QEvent::Close:
      if (!IsTooSoon(window)) return false;
      event->ignore();
      return true;
    default:
      return false;
  }
}

/// Notes what a box goes through, and that a window was blocked by one.
void InputGate::Seen(QObject& watched, QEvent::Type type) {
  if (type == QEvent::WindowBlocked) LetGo();
  if (type == QEvent::WindowDeactivate) mKeys.clear();
  if (&watched != mBox.window || (type != QEvent::Paint && type != QEvent::WindowActivate)) return;
  mBox.painted = mBox.painted || type == QEvent::Paint;
  const bool shows = mBox.painted && mBox.window->isActiveWindow();
  if (shows && !mBox.since) mBox.since = clock::SteadyNow();
}

/// A key that does something when it is pressed or let go, rather than move or edit.
bool InputGate::Acts(const QWindow& window, const QKeyEvent& key) const {
  if (IsModifier(key.key())) return false;
  if (qobject_cast<const QMessageBox*>(WidgetOf(window)) != nullptr) return !Moves(key.key());
  switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
    case Qt::Key_F1:
      return true;
    case Qt::Key_Space:
      return qobject_cast<QLineEdit*>(QApplication::focusWidget()) == nullptr;
    default:
      return key.modifiers().testFlag(Qt::AltModifier);
  }
}

bool InputGate::Counts(const QWindow& window, const QKeyEvent& key, bool repeats) const {
  if (IsModifier(key.key())) return true;
  const auto locks = mLocks.find(WidgetOf(window));
  if (locks != mLocks.end() && locks->second->IsLockedFor(key)) return false;
  return !Acts(window, key) || (!repeats && !IsTooSoon(window));
}

bool InputGate::KeyDown(QWindow& window, QKeyEvent& key) {
  const auto known = mKeys.find(key.key());
  // The toolkit asks for a shortcut first and then tells of the same press.
  if (known != mKeys.end() && known->second.at == key.timestamp() && !key.isAutoRepeat() &&
      known->second.window == &window && key.type() == QEvent::KeyPress) {
    return known->second.counts;
  }
  const auto released = mReleased.find(key.key());
  const bool again = released != mReleased.end() && key.timestamp() - released->second <= kRepeatWithin;
  const bool counts = Counts(window, key, key.isAutoRepeat() || again);
  if (!key.isAutoRepeat()) {
    mKeys[key.key()] = {.window = &window,
                        .counts = counts,
                        .epoch = mEpoch,
                        .at = key.timestamp(),
                        .focus = Acts(window, key) ? QApplication::focusWidget() : nullptr};
  }
  return counts;
}

bool InputGate::KeyUp(QWindow& window, const QKeyEvent& key) {
  if (key.isAutoRepeat()) return !Acts(window, key);
  mReleased[key.key()] = key.timestamp();
  const auto found = mKeys.find(key.key());
  if (IsModifier(key.key())) return true;
  if (found == mKeys.end()) return false;
  const Press press = found->second;
  mKeys.erase(found);
  const bool elsewhere = press.focus != nullptr && press.focus != QApplication::focusWidget();
  return press.counts && press.window == &window && press.epoch == mEpoch && !elsewhere;
}

bool InputGate::IsLockedAt(const QWindow& window, QPoint place) const {
  if (QApplication::activePopupWidget() != nullptr) return false;
  const auto locks = mLocks.find(WidgetOf(window));
  return locks != mLocks.end() && locks->second->IsLockedAt(place);
}

bool InputGate::IsTooSoon(const QWindow& window) const {
  if (mBox.window == nullptr || mBox.window->windowHandle() != &window) return false;
  return !mBox.since || clock::SteadyNow() - *mBox.since < kReading;
}

bool InputGate::ButtonDown(QWindow& window, const QMouseEvent& mouse) {
  const bool counts = !IsLockedAt(window, mouse.position().toPoint()) && !IsTooSoon(window);
  mButtons[mouse.button()] = {.window = &window, .counts = counts, .epoch = mEpoch, .at = mouse.timestamp()};
  return counts;
}

bool InputGate::ButtonUp(QWindow& window, const QMouseEvent& mouse) {
  const auto found = mButtons.find(mouse.button());
  // Of a button that was pressed again before it was let go, the second release belongs to nothing.
  const Press press =
      found == mButtons.end() ? Press{.window = &window, .counts = true, .epoch = mEpoch - 1} : found->second;
  mButtons.erase(mouse.button());
  if (!press.counts || press.epoch == mEpoch) return press.counts;
  // Whoever was pressed is told that it was let go, but not on itself.
  QMouseEvent elsewhere(QEvent::MouseButtonRelease, kNowhere, kNowhere, kNowhere, mouse.button(),
                        mouse.buttons(), mouse.modifiers());
  elsewhere.setTimestamp(mouse.timestamp());
  mTakingBack = true;
  QCoreApplication::sendEvent(&window, &elsewhere);
  mTakingBack = false;
  return false;
}

}  // namespace tarnwick::qt
