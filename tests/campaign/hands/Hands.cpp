#include "Hands.h"

#include <QApplication>
#include <QInputEvent>
#include <QTest>
#include <QWheelEvent>
#include <array>
#include <utility>

namespace tarnwick::test {
namespace {

using Kind = Deed::Kind;
using namespace std::chrono_literals;

struct Stroke {
  int key;
  Qt::KeyboardModifiers modifiers;
};

/// What fingers come upon, the more often the oftener it stands here.
const std::array kStrokes{
    Stroke{Qt::Key_Return, {}},
    Stroke{Qt::Key_Return, {}},
    Stroke{Qt::Key_Return, {}},
    Stroke{Qt::Key_Enter, Qt::KeypadModifier},
    Stroke{Qt::Key_Space, {}},
    Stroke{Qt::Key_Space, {}},
    Stroke{Qt::Key_Escape, {}},
    Stroke{Qt::Key_Tab, {}},
    Stroke{Qt::Key_Down, {}},
    Stroke{Qt::Key_Down, {}},
    Stroke{Qt::Key_Up, {}},
    Stroke{Qt::Key_Right, Qt::AltModifier},
    Stroke{Qt::Key_Right, Qt::AltModifier},
    Stroke{Qt::Key_Left, Qt::AltModifier},
    Stroke{Qt::Key_P, Qt::AltModifier},
    Stroke{Qt::Key_P, Qt::AltModifier},
    Stroke{Qt::Key_V, Qt::AltModifier},
    Stroke{Qt::Key_R, Qt::AltModifier},
    Stroke{Qt::Key_D, Qt::AltModifier},
    Stroke{Qt::Key_Y, Qt::AltModifier},
    Stroke{Qt::Key_F1, {}},
};

constexpr Milliseconds kRepeatDelay = 500ms, kRepeatEvery = 33ms;

QString TextOf(int key) {
  return key == Qt::Key_Space ? QStringLiteral(" ") : QString();
}

}  // namespace

Hands::Hands(std::uint32_t seed, Milliseconds from) : mDice(seed), mNext(from) {
  qApp->installEventFilter(this);
}

Hands::~Hands() {
  qApp->removeEventFilter(this);
}

/// The toolkit stamps what a test sends with the time of this computer.
bool Hands::eventFilter(QObject*, QEvent* event) {
  if (event->isInputEvent()) {
    static_cast<QInputEvent*>(event)->setTimestamp(static_cast<quint64>(mPassing.count()));
  }
  return false;
}

void Hands::Tap(Milliseconds at, int key, Qt::KeyboardModifiers modifiers, Milliseconds held) {
  Plan({.kind = Kind::KeyDown, .at = at, .key = key, .modifiers = modifiers});
  for (Milliseconds late = kRepeatDelay; late < held; late += kRepeatEvery) {
    // Some window systems now and then tell a repeat as if the key had been let go and pressed.
    const bool told = Draw(8) != 0;
    Plan({.kind = Kind::KeyUp, .at = at + late, .key = key, .modifiers = modifiers, .repeat = told});
    Plan({.kind = Kind::KeyDown, .at = at + late, .key = key, .modifiers = modifiers, .repeat = told});
  }
  Plan({.kind = Kind::KeyUp, .at = at + held, .key = key, .modifiers = modifiers});
}

void Hands::Click(Milliseconds at, QPoint from, QPoint to, Milliseconds held) {
  Plan({.kind = Kind::MouseDown, .at = at, .place = from});
  Plan({.kind = Kind::MouseUp, .at = at + held, .place = to});
}

void Hands::Plan(Deed deed) {
  mPlan.emplace(deed.at, deed);
}

bool Hands::Next(Milliseconds now) {
  if (!mPlan.empty() && mPlan.begin()->first <= now && (mActions == 0 || mPlan.begin()->first <= mNext)) {
    const Deed deed = mPlan.begin()->second;
    mPlan.erase(mPlan.begin());
    Do(deed);
    return true;
  }
  if (mActions == 0 || mNext > now) return false;
  --mActions;
  Act(mNext);
  mNext += Milliseconds(Draw(3) == 0 ? Draw(60) : Draw(10) == 0 ? Draw(4000) : 60 + Draw(500));
  return true;
}

void Hands::Act(Milliseconds at) {
  const Milliseconds held(Draw(8) == 0 ? Draw(3000) : 20 + Draw(120));
  const int what = Draw(100);
  if (what < 55) {
    const Stroke& stroke = kStrokes[static_cast<std::size_t>(Draw(static_cast<int>(kStrokes.size())))];
    const int times = Draw(6) == 0 ? 3 : 1;
    for (int i = 0; i < times; ++i) {
      Tap(at + i * (held + Milliseconds(70 + Draw(100))), stroke.key, stroke.modifiers, held);
    }
  } else if (what < 90) {
    const QPoint from = aim();
    Click(at, from, Draw(10) == 0 ? aim() : from, held);
  } else {
    const Kind kind = what < 92 ? Kind::Wheel : what < 93 ? Kind::Close : Kind::Drop;
    Plan({.kind = kind, .at = at, .place = aim()});
  }
}

void Hands::Do(Deed deed) {
  const bool byPlace = deed.kind == Kind::MouseDown || deed.kind == Kind::MouseUp || deed.kind == Kind::Wheel;
  QWidget* const active = QApplication::activeWindow();
  deed.window = byPlace             ? QGuiApplication::topLevelAt(deed.place)
                : active != nullptr ? active->windowHandle()
                                    : nullptr;
  if (done) done(deed);
  mDone.push_back(deed);
}

void Hands::Deliver() {
  while (!mDone.empty()) {
    const Deed deed = mDone.front();
    mDone.pop_front();
    if (deed.window != nullptr && deed.window->isVisible()) Pass(deed);
  }
}

void Hands::Pass(const Deed& deed) {
  mPassing = deed.at;
  QWindow* const window = deed.window;
  const QPointF at = window->mapFromGlobal(deed.place);
  const auto mouse = [&](QEvent::Type type, Qt::MouseButtons down) {
    qt_handleMouseEvent(window, at, deed.place, down, Qt::LeftButton, type, {},
                        static_cast<int>(deed.at.count()));
  };
  switch (deed.kind) {
    case Kind::KeyDown:
    case Kind::KeyUp:
      qt_handleKeyEvent(window, deed.kind == Kind::KeyDown ? QEvent::KeyPress : QEvent::KeyRelease, deed.key,
                        deed.modifiers, TextOf(deed.key), deed.repeat);
      break;
    case Kind::MouseDown:
      mouse(QEvent::MouseButtonPress, Qt::LeftButton);
      break;
    case Kind::MouseUp:
      mouse(QEvent::MouseButtonRelease, Qt::NoButton);
      break;
    case Kind::Wheel: {
      QWheelEvent wheel(at, deed.place, {}, {0, -120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
      QCoreApplication::sendEvent(window, &wheel);
      break;
    }
    case Kind::Close:
      // A window manager asks only what has the keyboard: a window behind a box is not asked.
      if (window == QGuiApplication::focusWindow()) window->close();
      break;
    case Kind::Drop:  // Let go where the pointer says that it is taken.
      break;
  }
}

}  // namespace tarnwick::test
