#include "platform/clock.h"

#include <thread>

namespace tarnwick::clock {
namespace {

class SystemClock final : public IClock {
 public:
  std::tm LocalNow() override { return LocalTime(std::time(nullptr)).value_or(std::tm{}); }
  void Sleep(std::chrono::milliseconds duration) override { std::this_thread::sleep_for(duration); }
};

SystemClock gSystem;

IClock& Clock() {
  return Seam<IClock>::UsedOr(gSystem);
}

}  // namespace

std::tm LocalNow() {
  return Clock().LocalNow();
}
void Sleep(std::chrono::milliseconds duration) {
  Clock().Sleep(duration);
}

}  // namespace tarnwick::clock
