// Writing one device's image from the selected package into the device.
#pragma once

#include <cstdint>
#include <string_view>

#include "programmer/Progress.h"

namespace tarnwick {

/// Brings row `index` into program state, sends its image block by block and ends the programming.
/// True when the image was written. The row's `State` and `HwRev` must be up to date. Shows its own
/// messages, pumps events before every block, and stops between blocks when `gCancelProgram` is set; the flag
/// is the run's, which clears it when it begins and begins no image while it stands.
/// A row without a usable image is refused with `ImageRefusal`'s text before the first call.
bool ProgramDevice(std::int32_t index, std::string_view caption, IProgress& progress);

/// True when none of the `count` words from `word` on has both bytes.
bool IsBlockBlank(std::int32_t qalIndex, std::int32_t word, std::int32_t count);

}  // namespace tarnwick
