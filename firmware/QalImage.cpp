#include "firmware/QalImage.h"

#include <algorithm>

namespace tarnwick {
namespace {

/// A record begins at byte 0xFFFF at the latest and holds 127 words at most.
constexpr std::size_t kMostRuns = (0xFFFF / 2 + 127) / QalRun::kWords + 1;

}  // namespace

QalRun& QalImages::AddRun(std::size_t image, std::size_t index) {
  std::vector<std::uint32_t>& runs = mImages[image].Runs;
  // Grown by halves, but not beyond the last run that a record can reach.
  if (index >= runs.size()) runs.resize(std::max(index + 1, std::min(index * 3 / 2, kMostRuns)));
  QalRun& run = mRuns.Add();
  runs[index] = static_cast<std::uint32_t>(mRuns.size());
  return run;
}

const QalRun* QalImages::Find(std::size_t image, std::size_t word) const {
  const std::vector<std::uint32_t>& runs = mImages[image].Runs;
  const std::size_t index = word / QalRun::kWords;
  return index < runs.size() && runs[index] != 0 ? &mRuns[runs[index] - 1] : nullptr;
}

std::size_t QalImages::LastWord(std::size_t image, std::size_t top, std::int32_t device) const {
  while (top > 0) {
    const QalRun* run = Find(image, top);
    if (run != nullptr && run->Devices[top % QalRun::kWords] >= device) break;
    // Where there is no run, the next word to look at is the last one below it.
    const std::size_t step = run != nullptr ? 1 : top % QalRun::kWords + 1;
    top -= std::min(step, top);
  }
  return top;
}

std::size_t QalImages::Copy(std::size_t image, std::int32_t device, std::span<QalWord> to) const {
  std::size_t copied = 0;
  for (std::size_t first = 0; first < to.size(); first += QalRun::kWords) {
    const QalRun* run = Find(image, first);
    const std::size_t count = std::min(run != nullptr ? QalRun::kWords : 0, to.size() - first);
    for (std::size_t place = 0; place < count; ++place) {
      if (run->Devices[place] < device) continue;
      to[first + place] = run->Words[place];
      ++copied;
    }
  }
  return copied;
}

}  // namespace tarnwick
