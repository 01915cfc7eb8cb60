// The debug log: one plain text file, "debugexe.txt", in the folder in which the program was started.
//
// It is off until the settings switch it on. Nothing here can stop the program or shows a message.
#pragma once

#include <string_view>

#include "platform/files.h"

namespace tarnwick {

/// The open log file; none before `OpenDebugLog`, after `CloseDebugLog`, or where it cannot be made.
extern files::Stream gDebugFile;
/// Lines are written only while this is true.
extern bool gDebugOn;

/// Deletes the log of the run before, makes an empty one in the current directory, and switches the
/// log off. Where that is not possible, as in a read-only folder, the program runs without a log.
void OpenDebugLog();
/// Ends writing. What `DebugEnabled` tells stays, since the settings are saved afterwards.
void CloseDebugLog();

/// Appends one line: local time as 14 digits, ": ", `text` unchanged. It stands in the file when this
/// returns. Does nothing while the log is off.
void DebugLog(std::string_view text);

void SetDebugEnabled(bool on);
bool DebugEnabled();

using files::FileExists;

}  // namespace tarnwick
