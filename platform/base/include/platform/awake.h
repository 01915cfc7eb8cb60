// Keeping the computer awake while work runs that sleep would cut off.
#pragma once

namespace tarnwick::awake {

class IKeeper {
 public:
  virtual ~IKeeper() = default;
  /// The computer is not to go to sleep of itself from here on. Never fails: where nobody can be
  /// asked, nothing happens.
  virtual void Keep() = 0;
  /// It may again. Only after `Keep`.
  virtual void LetGo() = 0;
};

/// Puts `keeper` in place; it must outlive its use. Until then nothing happens.
void Install(IKeeper& keeper);
void Uninstall();

/// Keeps the computer awake for its lifetime. One at a time.
class Hold {
 public:
  Hold();
  ~Hold();
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
};

}  // namespace tarnwick::awake
