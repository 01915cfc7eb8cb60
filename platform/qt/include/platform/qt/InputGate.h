// Which of the things that the user's hands did count: the one rule for keys, clicks and locks.
#pragma once

#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>
#include <chrono>
#include <map>
#include <optional>

namespace tarnwick::qt {

/// A window that can be locked in part.
class ILockable {
 public:
  virtual ~ILockable() = default;
  /// True when a press of the mouse there, in the window's coordinates, is made on something locked.
  virtual bool IsLockedAt(QPoint place) const = 0;
  virtual bool IsLockedFor(const QKeyEvent& key) const = 0;
};

/// Stands before all windows of the application.
///
/// - What is done to something that is locked is discarded, the release together with its press.
/// - A release counts only where its press counted, in the same window, and where no lock began or ended and
///   no box came up between the two. That of a key that acts counts only for the control that got the press:
///   a button under a held mouse takes any Space that is let go there.
/// - A key that presses, steps, answers or closes counts when it is pressed, not when the keyboard repeats
///   it. A press within 60 ms of the same key's release, by the times of the two events, is a repeat: some
///   window systems tell one so now and then. Keys that move or edit repeat as everywhere.
/// - A box discards what comes in its first 300 ms, by the program's clock, from when it is painted and
///   active.
class InputGate final : public QObject {
 public:
  /// The gate of this application; made at the first call, which a QApplication must precede.
  static InputGate& Of();

  /// From now on `locks` is asked for what is done to `window`; it must live as long.
  void Watch(QWidget& window, const ILockable& locks);
  /// `box` is about to come up.
  void HoldsBack(QWidget& box);
  /// What is held down now means nothing any more, and nor does its release.
  void LetGo() { ++mEpoch; }
  /// Discards what was done up to now to things that are locked, and lets it through to those that are live;
  /// then as `LetGo`. To be called just before a lock ends.
  void Discard();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  /// A key or button that is down.
  struct Press {
    QPointer<QWindow> window;
    bool counts = false;
    int epoch = 0;
    quint64 at = 0;
    QPointer<QWidget> focus = nullptr;  ///< Who got a key that acts; null for any other.
  };
  struct Box {
    QPointer<QWidget> window;
    bool painted = false;
    std::optional<std::chrono::milliseconds> since;  ///< None before it was painted and active.
  };

  explicit InputGate(QObject* application);
  bool KeyDown(QWindow& window, QKeyEvent& key);
  bool KeyUp(QWindow& window, const QKeyEvent& key);
  bool ButtonDown(QWindow& window, const QMouseEvent& mouse);
  bool ButtonUp(QWindow& window, const QMouseEvent& mouse);
  bool Counts(const QWindow& window, const QKeyEvent& key, bool repeats) const;
  bool Acts(const QWindow& window, const QKeyEvent& key) const;
  bool IsLockedAt(const QWindow& window, QPoint place) const;
  bool IsTooSoon(const QWindow& window) const;
  void Seen(QObject& watched, QEvent::Type type);

  std::map<QWidget*, const ILockable*> mLocks;
  Box mBox;  ///< The last one to come up.
  std::map<int, Press> mKeys;
  std::map<int, quint64> mReleased;  ///< When each key was let go last.
  std::map<int, Press> mButtons;
  int mEpoch = 0;
  bool mTakingBack = false;
};

}  // namespace tarnwick::qt
