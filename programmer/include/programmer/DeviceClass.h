// The class of device that the user works on.
#pragma once

#include <cstdint>

namespace tarnwick {

/// Takes class `deviceClass` (0 motor control board, 1 accessories) into use: builds its table of devices
/// anew and chooses its folder of packages, which is made where there is none. A folder that cannot be made
/// shows later as an empty list.
void ChooseDeviceClass(std::int32_t deviceClass);

}  // namespace tarnwick
