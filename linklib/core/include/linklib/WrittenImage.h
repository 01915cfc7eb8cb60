// What the library was told to write into one device since programming started.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "linklib/Frame.h"

namespace tarnwick::wire {

/// Highest word index of a device's program memory.
inline constexpr std::int32_t kLastWord = 0xFFFF;

class WrittenImage {
 public:
  void Clear() { mWords.clear(); }
  /// Notes one word; `index` is 0 to `kLastWord`.
  void Note(std::int32_t index, std::uint16_t word);
  /// Calls `visit` for each run of consecutive words, in order, with its first index and its bytes,
  /// low byte first. Stops and returns false as soon as `visit` does.
  bool EachRun(const std::function<bool(std::uint16_t first, ByteView bytes)>& visit) const;

 private:
  static constexpr std::int32_t kUnwritten = -1;
  std::vector<std::int32_t> mWords;
};

}  // namespace tarnwick::wire
