// Serves a run of single-word reads from few exchanges.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "linklib/Surroundings.h"

namespace tarnwick::wire {

/// A caller that asks for two neighbouring words, one after the other, will probably go on like that. From
/// the second one on, words are read up to the next one whose number is a multiple of `kMostWords`, as many
/// as one answer carries at most. The size of a device's memory is such a multiple too, so this never reads
/// beyond its end.
class ReadAhead {
 public:
  /// The oldest that a word may be.
  static constexpr Duration kOldest = std::chrono::seconds(1);

  /// The word, when it was read ahead and is no older than allowed.
  std::optional<std::int32_t> Find(std::int32_t address, std::int32_t place, Duration now);
  /// How many words from `place` on to read now; 1 for no reading ahead.
  std::int32_t Wanted(std::int32_t address, std::int32_t place) const;
  /// Takes words that were read ahead by a question asked at `asked`.
  void Keep(std::int32_t address, std::int32_t first, std::vector<std::int32_t> words, Duration asked);
  /// One word was read alone. With `alone`, so are all others of its run.
  void Note(std::int32_t address, std::int32_t place, bool alone);
  /// Forgets all words. To be called by whatever else is asked of the mount.
  void Forget() { *this = {}; }

 private:
  std::int32_t mAddress = 0;
  std::int32_t mNext = -1;  ///< Place that continues the run.
  bool mAlone = false;      ///< The run is read word by word.
  std::int32_t mFirst = 0;
  std::vector<std::int32_t> mWords;
  Duration mAsked{};
};

}  // namespace tarnwick::wire
