// Writing one device's image from the selected package into the device.
#pragma once

#include <cstdint>
#include <string_view>

#include "programmer/Progress.h"

namespace tarnwick {

/// Brings row `index` into program state, sends its image block by block and ends the programming.
/// True when the image was written. The row's `QalIndex` must not be 0, its `State` and `HwRev` must
/// be up to date. Shows its own messages; pumps events before every block.
bool ProgramDevice(std::int32_t index, std::string_view caption, IProgress& progress);

/// True when none of the `count` words from `word` on has both bytes.
bool IsBlockBlank(std::int32_t qalIndex, std::int32_t word, std::int32_t count);

}  // namespace tarnwick
