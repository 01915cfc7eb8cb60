// Wall clock and pauses, injected so that no test sleeps.
#pragma once

#include <chrono>
#include <ctime>
#include <optional>

#include "platform/seam.h"

namespace tarnwick::clock {

class IClock {
 public:
  virtual ~IClock() = default;
  /// Local date and time, read once.
  virtual std::tm LocalNow() = 0;
  /// Time that only goes on, from some beginning.
  virtual std::chrono::milliseconds SteadyNow() = 0;
  /// Blocks the calling thread.
  virtual void Sleep(std::chrono::milliseconds duration) = 0;
};

// By the clock that `Seam<IClock>` has, else the system's.
std::tm LocalNow();
std::chrono::milliseconds SteadyNow();
void Sleep(std::chrono::milliseconds duration);

/// The local date and time of a moment; none where the system has no answer.
std::optional<std::tm> LocalTime(std::time_t moment);

/// The moment of a local date and time; none where that is out of the system's reach. One that does not exist, as
/// where clocks go forward at midnight, is the hour behind it.
std::optional<std::time_t> MomentOf(const std::tm& local);

}  // namespace tarnwick::clock
