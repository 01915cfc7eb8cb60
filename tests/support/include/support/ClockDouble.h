// A clock that tells a fixed time and never sleeps.
#pragma once

#include <vector>

#include "platform/clock.h"

namespace tarnwick::test {

/// Installs itself for its lifetime.
class ClockDouble final : public clock::IClock {
 public:
  ClockDouble() { Seam<clock::IClock>::Install(*this); }
  ~ClockDouble() override { Seam<clock::IClock>::Uninstall(); }
  std::tm LocalNow() override { return now; }
  void Sleep(std::chrono::milliseconds duration) override { sleeps.push_back(duration); }

  std::tm now{};
  std::vector<std::chrono::milliseconds> sleeps;
};

}  // namespace tarnwick::test
