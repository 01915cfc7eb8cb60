// Who this program is, where it lies, and how it ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/seam.h"

namespace tarnwick::program {

/// Identity of the running program. The file name decides titles and the settings file.
struct Identity {
  std::filesystem::path folder;  ///< The portable folder, absolute, no trailing separator.
  std::string name;              ///< The program's file name without its extension.
  std::int32_t major = 0;
  std::int32_t minor = 0;
  std::int32_t revision = 0;
  std::string file = {};  ///< The program's file name; empty where that is `name`.
};

/// The identity in use: what was set, else read from the running executable once.
const Identity& This();
/// Replaces the identity, for programs that drive this one and for tests.
void Set(Identity identity);

/// The file that the running program was started from, also after another one took its name; empty where the
/// system does not know it.
std::filesystem::path RunningFile();

/// Whether the running program no longer is the file that bears its name.
bool IsReplaced();

/// What programs are made for, such as "linux-x86_64".
std::string System();

/// Whether a window could be shown, as far as that can be told without a toolkit.
bool HasDisplay();

/// The running program's file.
std::filesystem::path Executable();

/// The terminal that this was started from may go, and whoever reads what is written there: from now on
/// neither ends or stops the process. Nothing that is opened later takes the place of a standard stream.
void OutliveTerminal();

/// The system that this runs on, as "Linux 6.1.0 x86_64".
std::string SystemText();

/// "2.2.4"
std::string VersionText();
/// The frame's caption at rest: name, two blanks, "v" and the version.
std::string Caption();

/// What happens in place of the process's end, where `Seam<Ending>` has one.
struct Ending {
  std::function<void()> run;
};

/// Ends the process at once, without returning and without running anything else.
/// An `Ending` in place may return; callers make `End` their last action.
void End();

}  // namespace tarnwick::program
