#include "programmer/TimeLeft.h"

#include <cmath>

#include "platform/clock.h"

namespace tarnwick {
namespace {

using namespace std::chrono_literals;

/// Less than that of an image, or of time, tells nothing.
constexpr double kLeastShare = 0.02;
constexpr auto kLeastTime = 1s;

}  // namespace

void TimeLeft::Begin(std::int32_t number, std::int32_t count) {
  mNumber = number;
  mCount = count;
  mShare = 0;
  mBegin = clock::SteadyNow();
}

void TimeLeft::Reached(double share) {
  if (share < mShare) mBegin = clock::SteadyNow();
  mShare = share;
}

std::string TimeLeft::Text() const {
  std::string text;
  if (mCount > 1) text = "Motor " + std::to_string(mNumber) + " of " + std::to_string(mCount);
  const std::chrono::duration<double> spent = clock::SteadyNow() - mBegin;
  if (mShare < kLeastShare || spent < kLeastTime) return text;
  const double whole = spent.count() / mShare;
  const auto seconds = static_cast<long>(std::ceil(whole * (1 - mShare + mCount - mNumber)));
  if (!text.empty()) text += ", ";
  if (seconds < 100) return text + "about " + std::to_string(seconds) + " s left";
  return text + "about " + std::to_string((seconds + 30) / 60) + " min left";
}

}  // namespace tarnwick
