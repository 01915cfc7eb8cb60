// What both checks of a package share: the one made when it is chosen and the one made for each
// device before it is programmed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "firmware/QALclass.h"

namespace tarnwick {

inline constexpr std::string_view kModelUnknown =
    "Warning: Motor Controller model can not be determined.\r\n\r\n"
    "Ensure that the appropriate firmware is selected for the device being upgraded.\r\n\r\n";
inline constexpr std::string_view kAtRisk =
    "Choosing an incorrect model can cause the mount to become unusable --\r\n\r\n"
    "contact Halcyrion technical support if you are unsure.\r\n\r\n";
inline constexpr std::string_view kContinue = "Do you wish to continue?";

inline constexpr std::string_view kNoMatch = "No matching devices found in firmware file";
/// Behind the row's name in brackets.
inline constexpr std::string_view kOtherRevision =
    "Hardware Revision doesn't match QAL file Hardware Revision";

/// Whether devices are held against the package before they are programmed: not under the override, and not
/// accessories.
bool ComparesPackages();

/// A row of revision 5 or 6 whose old boot loader cannot tell which passes for a package that
/// leaves no choice: one that lists a single revision, 5 or 6.
bool LeavesNoOtherRevision(const QALclass& package, std::int32_t index);

/// Whether the package lists the revision that `EffectiveHwRev` gives for the row.
bool ListsHwRev(const QALclass& package, std::int32_t index);

/// What a package is told to be that did not load.
std::string ErrorText(const QALclass& package);

}  // namespace tarnwick
