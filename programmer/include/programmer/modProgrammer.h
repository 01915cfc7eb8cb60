// Flags between the close path of the window and the long operations. They are the only channel:
// a stop request raises a flag, and the running loop looks at it between words or blocks.
#pragma once

#include <cstdint>
#include <string_view>

namespace tarnwick {

extern bool gVerifying;           ///< A verify run is in progress.
extern bool gCancelVerify;        ///< The user has asked to stop the verify run.
extern bool gProgramming;         ///< A programming run is in progress.
extern bool gCancelProgram;       ///< The user has confirmed stopping the programming run.
extern std::int32_t gTotalWords;  ///< Highest word index being worked on: the progress denominator.

/// What is asked before `gCancelProgram` is set.
inline constexpr std::string_view kCancelProgramming =
    "Cancelling Programming at this stage would leave the device in Program mode\r\n"
    "making the firmware unusable until reprogrammed!\r\n"
    "\r\n"
    "Are you sure you want to Cancel Programming?";

}  // namespace tarnwick
