// The rules that hold a package against a device before any byte is sent, and the renewing of an
// outdated boot loader.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "programmer/Progress.h"

namespace tarnwick {

/// True when programming of row `index` may go on. Reads the row's state and revision anew and shows
/// its own messages.
bool CheckCompatibility(std::int32_t index);

/// True when the package lists the revision that `EffectiveHwRev` gives for the row.
bool PackageHasHwRev(std::int32_t index);

/// What `CheckBootLoader` found.
enum class BootLoaderCheck : std::int32_t {
  NotNeeded = -1,  ///< No upgrade needed, or the question does not apply.
  Outdated = 0,    ///< The boot loader must be upgraded.
  AsExpected = 1,  ///< The boot loader's words are as expected.
  NoAnswer = 2,    ///< The boot loader could not be asked.
};
/// Asks whether the row's boot loader must be replaced first. May settle the row's revision fields.
BootLoaderCheck CheckBootLoader(std::int32_t index);

/// Programs the built-in boot package that fits the row, then loads the selected package again.
/// `packagePath` is that package's path, a copy taken beforehand. True when the boot package was
/// written; false also when the user declines.
bool UpgradeBootLoader(std::int32_t index, std::string_view caption, const std::filesystem::path& packagePath,
                       IProgress& progress);

/// Sets each row's `QalIndex` to the first device of the package at its address, or 0.
void MatchPackageDevices();

}  // namespace tarnwick
