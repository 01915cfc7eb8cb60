// What was found on the bus, in the record.
#pragma once

#include <cstdint>
#include <string_view>

namespace tarnwick {

/// One line for row `index` of `gDevices`, as the table has it: name, address, state, model, version,
/// revision and boot loader.
void RecordDevice(std::int32_t index);
void RecordDevices();

/// One line for the line itself: port, device and product, speed and repeats as far as the library tells.
void RecordLine();

/// A call of the link library failed while `what` was done: why, as far as the library tells.
void RecordLinkFailure(std::string_view what);

}  // namespace tarnwick
