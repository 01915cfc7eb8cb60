// The rules that hold the selected package against a device before any byte is sent.
#pragma once

#include <cstdint>
#include <string>

#include "firmware/QalPackage.h"

namespace tarnwick {

/// True when programming of row `index` may go on. Reads the row's state and revision anew and shows
/// its own messages. Touches nothing in the device.
bool CheckCompatibility(std::int32_t index);

/// True when the package lists the revision that `EffectiveHwRev` gives for the row.
bool PackageHasHwRev(std::int32_t index);

/// Sets each row's `QalIndex` to the first device of the package at its address, or 0. Only the
/// address decides.
void MatchPackageDevices();

/// What a package that did not load is told to be: error number, its text and the line.
std::string PackageErrorText();

/// Why `gQAL` is not the package that was chosen, known by `chosen`: the last load failed, or it is another
/// one. Empty when it is.
std::string ChosenPackageRefusal(const QalIdentity& chosen);

/// Why `gQAL` has no image that may be used for row `index`: the last load failed, or the package
/// does not hold the row's device. Empty when there is one. Whoever reads an image asks this first,
/// since a package can be lost when it is loaded again in the midst of a run.
std::string ImageRefusal(std::int32_t index);

}  // namespace tarnwick
