// The record on its way to whoever helps.
#pragma once

namespace tarnwick::qt {

/// Puts the last run's part of the record on the clipboard; before the first run, all since the program's
/// start.
void CopyRecord();

}  // namespace tarnwick::qt
