// A clock that tells a fixed date and never sleeps; between any two looks at it a step goes by.
#pragma once

#include "platform/clock.h"

namespace tarnwick::test {

/// Installs itself for its lifetime.
class ClockDouble : public clock::IClock {
 public:
  ClockDouble() { Seam<clock::IClock>::Install(*this); }
  ~ClockDouble() override { Seam<clock::IClock>::Uninstall(); }
  std::tm LocalNow() override { return now; }
  std::chrono::milliseconds SteadyNow() override { return steady += step; }
  void Sleep(std::chrono::milliseconds) override {}

  std::tm now{};
  std::chrono::milliseconds steady{};
  std::chrono::milliseconds step = std::chrono::seconds(1);
};

}  // namespace tarnwick::test
