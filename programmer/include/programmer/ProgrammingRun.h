// A programming run over the chosen devices, without its window: what is checked, and what is done
// for one device after the other. The first failure ends each of these; it has then been shown.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "programmer/Progress.h"

namespace tarnwick {

/// True when the rows, chosen together, may be programmed in one run. Shows its own message. Asks no
/// device: the table's values are used as they stand.
bool AllowedTogether(std::span<const std::int32_t> rows);

/// `CheckCompatibility` of each row, in order.
bool CheckAll(std::span<const std::int32_t> rows);

/// Renews the boot loader where that is needed and programs the device, row by row. `restoreFrame`
/// is called after each display of progress, so that the frame's caption and the cancel button come
/// back to normal.
bool ProgramAll(std::span<const std::int32_t> rows, IProgress& progress,
                const std::function<void()>& restoreFrame);

}  // namespace tarnwick
