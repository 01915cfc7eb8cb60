// What each device last told of itself during this visit. A device that was stopped in the midst of
// programming can tell no model and, with an old boot loader, no revision; its owner needs both to choose a
// package. No rule goes by it: it is there to be told.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick {

struct SeenDevice {
  std::int32_t Model = 0;  ///< 0 when it never told.
  std::string ModelName;   ///< Empty when it never told.
  std::int32_t HwRev = 0;  ///< 0 when it never told one that is believed.
};

/// What the device at that bus address last told; all empty when nothing yet.
const SeenDevice& LastSeen(std::int32_t address);
/// Takes what row `index` of `gDevices` knows now; what it does not know stays as it was.
void NoteSeen(std::int32_t index);
/// Takes what was written down at an earlier visit, where nothing is known yet.
void RecallSeen(std::int32_t address, const SeenDevice& seen);
/// Forgets all devices.
void ForgetSeen();

/// "CORVANEM, HwRev 5", or the one of the two that is known; empty when neither is.
std::string SeenText(const SeenDevice& seen);

}  // namespace tarnwick
