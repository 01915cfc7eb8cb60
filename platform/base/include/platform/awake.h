// Keeping the computer awake while work runs that sleep would cut off.
#pragma once

#include <memory>

#include "platform/seam.h"

namespace tarnwick::awake {

class IKeeper {
 public:
  virtual ~IKeeper() = default;
  /// The computer is not to go to sleep of itself, nor to be switched off, from here on. Never fails: where nobody can be
  /// asked, nothing happens.
  virtual void Keep() = 0;
  /// It may again. Only after `Keep`.
  virtual void LetGo() = 0;
};

/// The keeper that the system offers, in place by `Seam<IKeeper>` for its lifetime. Nothing is linked,
/// started or looked up before its first `Keep`, and its lock goes with this process however that ends.
std::unique_ptr<IKeeper> SystemKeeper();

/// Keeps the computer awake for its lifetime, by the keeper that is in place; without one nothing happens.
/// One at a time.
class Hold {
 public:
  Hold();
  ~Hold();
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
};

}  // namespace tarnwick::awake
