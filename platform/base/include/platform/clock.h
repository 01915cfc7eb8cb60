// Wall clock and pauses, injected so that no test sleeps.
#pragma once

#include <chrono>
#include <ctime>

namespace tarnwick::clock {

class IClock {
 public:
  virtual ~IClock() = default;
  /// Local date and time, read once.
  virtual std::tm LocalNow() = 0;
  /// Blocks the calling thread.
  virtual void Sleep(std::chrono::milliseconds duration) = 0;
};

/// Puts `replacement` in place; it must outlive its use.
void Install(IClock& replacement);
void Uninstall();

std::tm LocalNow();
void Sleep(std::chrono::milliseconds duration);

}  // namespace tarnwick::clock
