// Whether the selected package may be taken on to programming at all.
#pragma once

namespace tarnwick {

/// Holds the package just loaded into `gQAL` against the table of devices, linking the rows to its
/// devices. True when the user may go on to programming. Shows its own messages. Each device is
/// judged once more, anew, when its programming begins.
bool PackageFits();

}  // namespace tarnwick
