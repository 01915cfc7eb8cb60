// Finding out what stands on the bus behind the chosen port, and whether it can be upgraded at all.
#pragma once

namespace tarnwick {

/// Opens the port `gComPort` and reads each row of `gDevices` anew; what was known of its revision and model
/// is forgotten. False when the port cannot be used, when no device answers (the port is closed again) or
/// when one is too old to be upgraded (the port stays open). Shows its own messages; `gComPort` stays.
bool FindDevices();

/// The user goes on without a telescope: a port that is open is closed, and `gComPort` becomes empty. Asks
/// nothing of the link library when no port was opened.
void GoOnWithoutPort();

}  // namespace tarnwick
