#include "platform/clock.h"

#include <thread>

namespace tarnwick::clock {
namespace {

class SystemClock final : public IClock {
 public:
  std::tm LocalNow() override { return LocalTime(std::time(nullptr)).value_or(std::tm{}); }
  std::chrono::milliseconds SteadyNow() override {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
  }
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
std::chrono::milliseconds SteadyNow() {
  return Clock().SteadyNow();
}
void Sleep(std::chrono::milliseconds duration) {
  Clock().Sleep(duration);
}

std::optional<std::time_t> MomentOf(const std::tm& local) {
  std::tm wanted = local;
  wanted.tm_isdst = -1;
  const std::time_t time = std::mktime(&wanted);
  if (time == -1) return std::nullopt;
  constexpr std::time_t kHour = 3600;
  return wanted.tm_mday == local.tm_mday ? time : time + kHour;
}

}  // namespace tarnwick::clock
