#include "platform/clock.h"

#include <thread>

namespace tarnwick::clock {
namespace {

class SystemClock final : public IClock {
 public:
  std::tm LocalNow() override {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
  }
  void Sleep(std::chrono::milliseconds duration) override { std::this_thread::sleep_for(duration); }
};

SystemClock gSystem;
IClock* gClock = &gSystem;

}  // namespace

void Install(IClock& replacement) {
  gClock = &replacement;
}
void Uninstall() {
  gClock = &gSystem;
}
std::tm LocalNow() {
  return gClock->LocalNow();
}
void Sleep(std::chrono::milliseconds duration) {
  gClock->Sleep(duration);
}

}  // namespace tarnwick::clock
