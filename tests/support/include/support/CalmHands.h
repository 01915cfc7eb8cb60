// Lets what a test presses be told as what a calm user presses.
#pragma once

#include <QApplication>
#include <QInputEvent>

namespace tarnwick::test {

/// Stamps events for its lifetime: between any two presses of keys or buttons goes a tenth of a second.
class CalmHands : public QObject {
 public:
  CalmHands() { qApp->installEventFilter(this); }
  ~CalmHands() override { qApp->removeEventFilter(this); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (!watched->isWindowType() || !event->isInputEvent()) return false;
    // A key is first looked for among the shortcuts, then told as pressed: one press.
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::MouseButtonPress) mNow += 100;
    static_cast<QInputEvent*>(event)->setTimestamp(mNow);
    return false;
  }

 private:
  static inline quint64 mNow = 1000;  ///< Goes on from test to test, as the application does.
};

}  // namespace tarnwick::test
