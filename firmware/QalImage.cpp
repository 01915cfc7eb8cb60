#include "firmware/QalImage.h"

#include <algorithm>
#include <utility>

namespace tarnwick {
namespace {

/// A record begins at byte 0xFFFF at the latest and holds 127 words at most.
constexpr std::size_t kMostRuns = (0xFFFF / 2 + 127) / QalRun::kWords + 1;

constexpr std::size_t kTextChunk = 16384;
/// A text from this length on has a chunk of its own.
constexpr std::size_t kLongText = kTextChunk / 8;

}  // namespace

std::string_view QalTexts::Add(std::string_view text) {
  const bool fits = text.size() <= mRoom;
  char* place = mNext;
  if (!fits) {
    const bool own = text.size() >= kLongText;
    mChunks.push_back(std::make_unique_for_overwrite<char[]>(own ? text.size() : kTextChunk));
    place = mChunks.back().get();
    if (!own) mRoom = kTextChunk;
    if (own) return {place, text.copy(place, text.size())};
  }
  mRoom -= text.size();
  mNext = place + text.size();
  return {place, text.copy(place, text.size())};
}

void QalImages::MarkLast(std::vector<bool>& marks) const {
  for (std::size_t run = 0; run < mRuns.size(); ++run) {
    for (const std::int32_t device : mRuns[run].Devices) marks[static_cast<std::size_t>(device)] = true;
  }
}

QalRun& QalImages::AddRun(std::size_t image, std::size_t index) {
  QalImage& one = mImages[image];
  if (index >= one.RunCount) {
    // Grown by halves, but not beyond the last run that a record can reach.
    const std::size_t count = std::max(index + 1, std::min(index * 3 / 2, kMostRuns));
    auto runs = std::make_unique<std::uint32_t[]>(count);
    std::copy_n(one.Runs.get(), one.RunCount, runs.get());
    one.Runs = std::move(runs);
    one.RunCount = static_cast<std::uint32_t>(count);
  }
  QalRun& run = mRuns.Add();
  one.Runs[index] = static_cast<std::uint32_t>(mRuns.size());
  return run;
}

const QalRun* QalImages::Find(std::size_t image, std::size_t word) const {
  const QalImage& one = mImages[image];
  const std::size_t index = word / QalRun::kWords;
  return index < one.RunCount && one.Runs[index] != 0 ? &mRuns[one.Runs[index] - 1] : nullptr;
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
