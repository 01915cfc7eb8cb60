#include "linklib/ReadAhead.h"

#include "linklib/Frame.h"

namespace tarnwick::wire {

std::optional<std::int32_t> ReadAhead::Find(std::int32_t address, std::int32_t place, Duration now) {
  const std::int32_t at = place - mFirst;
  if (address != mAddress || at < 0 || static_cast<std::size_t>(at) >= mWords.size()) return std::nullopt;
  if (now - mAsked >= kOldest) return std::nullopt;
  mNext = place + 1;
  return mWords[static_cast<std::size_t>(at)];
}

std::int32_t ReadAhead::Wanted(std::int32_t address, std::int32_t place) const {
  constexpr auto kMost = static_cast<std::int32_t>(kMostWords);
  if (address != mAddress || place != mNext || mAlone) return 1;
  return kMost - place % kMost;
}

void ReadAhead::Keep(std::int32_t address, std::int32_t first, std::vector<std::int32_t> words,
                     Duration asked) {
  mAddress = address;
  mFirst = first;
  mNext = first + 1;
  mWords = std::move(words);
  mAsked = asked;
}

void ReadAhead::Note(std::int32_t address, std::int32_t place, bool alone) {
  const bool continued = address == mAddress && place == mNext;
  mAlone = alone || (continued && mAlone);
  mAddress = address;
  mNext = place + 1;
  mWords.clear();
}

}  // namespace tarnwick::wire
