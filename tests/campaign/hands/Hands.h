// A user's hands: what they press, hold, drag and let go, when, and how the window system tells of it.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <random>

namespace tarnwick::test {

using Milliseconds = std::chrono::milliseconds;

/// One thing that the hands did.
struct Deed {
  enum class Kind { KeyDown, KeyUp, MouseDown, MouseUp, Wheel, Close, Drop };
  Kind kind = Kind::KeyDown;
  Milliseconds at{};
  int key = 0;
  Qt::KeyboardModifiers modifiers{};
  bool repeat = false;  ///< The keyboard repeats a key that is held down, and the window system says so.
  QPoint place{};       ///< On the screen.
  QPointer<QWindow> window{};  ///< Who had the keyboard, or lay under the pointer, when it was done.
};

/// Does things at their times and passes them on, in order, when the program looks: as a window system does,
/// to the window that they were done to. Times are those of the campaign's clock.
class Hands : public QObject {
 public:
  Hands(std::uint32_t seed, Milliseconds from);
  ~Hands() override;

  /// Does what is due next, where that is due by `now`. Nothing is passed on yet.
  bool Next(Milliseconds now);
  /// Does everything that is due by `now`.
  void CatchUp(Milliseconds now) {
    while (Next(now)) {
    }
  }
  /// Passes on what was done; what comes of it runs within.
  void Deliver();
  /// Nothing more is done of their own accord, and what was done is passed on no more.
  void Rest() {
    mActions = 0;
    mPlan.clear();
    mDone.clear();
  }
  bool Resting() const { return mActions == 0 && mPlan.empty(); }

  void Tap(Milliseconds at, int key, Qt::KeyboardModifiers modifiers, Milliseconds held);
  void Click(Milliseconds at, QPoint from, QPoint to, Milliseconds held);

  int mActions = 200;                     ///< How much they still do.
  std::function<void(const Deed&)> done;  ///< Told of each deed when it is done.
  std::function<QPoint()> aim;            ///< A place on the screen worth a click.

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Act(Milliseconds at);
  void Plan(Deed deed);
  void Do(Deed deed);
  void Pass(const Deed& deed);
  int Draw(int below) { return static_cast<int>(mDice() % static_cast<std::uint32_t>(below)); }

  std::mt19937 mDice;
  std::multimap<Milliseconds, Deed> mPlan;
  std::deque<Deed> mDone;
  Milliseconds mNext{};
  Milliseconds mPassing{};  ///< When what is being passed on was done.
};

}  // namespace tarnwick::test
