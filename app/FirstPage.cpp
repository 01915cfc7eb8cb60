#include "FirstPage.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <utility>

namespace tarnwick {
namespace {

class PaintWatch final : public QObject {
 public:
  PaintWatch(QWidget& window, std::function<void()> then) : QObject(&window), mThen(std::move(then)) {
    window.installEventFilter(this);
  }

  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::Paint || mSeen) return false;
    mSeen = true;
    QTimer::singleShot(0, this, [this] {
      deleteLater();
      mThen();
    });
    return false;
  }

 private:
  std::function<void()> mThen;
  bool mSeen = false;
};

}  // namespace

void OnFirstPaint(QWidget& window, std::function<void()> then) {
  new PaintWatch(window, std::move(then));
  window.update();
}

}  // namespace tarnwick
