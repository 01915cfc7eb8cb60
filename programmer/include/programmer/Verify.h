// Comparing the firmware in a device with the image that the selected package holds for it. Nothing
// in the device is changed.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "programmer/Progress.h"

namespace tarnwick {

/// Why row `index` cannot be verified now, as the user is told; empty when it can. Reads nothing
/// from the device but the probe of `SupportsVerify`.
std::string VerifyRefusal(std::int32_t index);
/// The first refusal among the rows, in order; empty when all can be verified.
std::string VerifyRefusal(std::span<const std::int32_t> rows);

/// True when the device's firmware lets its program memory be read. Expects a usable image, for the
/// bus address comes from the package.
bool SupportsVerify(std::int32_t index);

/// How a comparison ended.
enum class VerifyEnd {
  Identical,
  Different,
  Unread,     ///< A word could not be read, and the user gave up.
  Cancelled,  ///< The user stopped it.
};

/// Compares every word that the package fills with the device's; stops at the first difference, and between
/// words when `gCancelVerify` is set. Shows its own messages. Expects that `VerifyRefusal` gave none.
VerifyEnd VerifyDevice(std::int32_t index, IProgress& progress);

/// A verify run: while `gVerifying` stands and the computer is kept awake, the hand control is locked and the
/// rows are verified in order until one is not identical; then the status is read anew, and the user is told
/// when all were equal. Expects that `VerifyRefusal` gave none. Gives how the last row compared ended.
VerifyEnd VerifyAll(std::span<const std::int32_t> rows, IProgress& progress);

}  // namespace tarnwick
