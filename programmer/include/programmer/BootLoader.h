// Finding out that a device's boot loader is outdated, and renewing it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "programmer/Progress.h"

namespace tarnwick {

/// What `CheckBootLoader` found.
enum class BootLoaderCheck : std::int32_t {
  NotNeeded = -1,  ///< No upgrade needed, or the question does not apply.
  Outdated = 0,    ///< The boot loader must be upgraded.
  AsExpected = 1,  ///< The boot loader's words are as expected.
  NoAnswer = 2,    ///< The boot loader could not be asked.
};
/// Asks whether the row's boot loader must be replaced first. May settle the row's revision fields.
BootLoaderCheck CheckBootLoader(std::int32_t index);

/// Programs the built-in boot package that fits the row, then loads the selected package again,
/// whatever came of the programming. True when the boot package was written and the package loaded again
/// is the one from before, by size and CRC; false, after a message, also when it is not, and when the
/// user declines. `packagePath` is the selected package's path; a copy, for loading clears the
/// original.
bool UpgradeBootLoader(std::int32_t index, std::string_view caption, std::filesystem::path packagePath,
                       IProgress& progress);

}  // namespace tarnwick
