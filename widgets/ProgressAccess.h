// The progress display as a screen reader sees it.
#pragma once

namespace tarnwick {

/// Makes Qt show every `ProgressBar` to screen readers as a progress bar with its value. Calling it
/// again changes nothing.
void TellScreenReadersOfProgress();

}  // namespace tarnwick
