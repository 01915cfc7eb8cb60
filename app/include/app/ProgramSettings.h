// The settings in the life of the program: what its start and its end do with them.
#pragma once

namespace tarnwick {

/// All the work of program start, in this order: working directory, `gQAL`, settings file, debug filters.
void LoadSettings();
/// All the work of program end: settings file, `gQAL` released, link closed if a port is in use.
void SaveSettings();

}  // namespace tarnwick
