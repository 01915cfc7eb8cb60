// Who this program is, where it lies, and how it ends.
//
// A portable folder holds the program and all that it keeps. Where the system's packages installed it, in "bin"
// with its library in "lib/tarnwick" beside that, what it keeps lies in a folder of its user's: "Tarnwick" in the
// user's folder of application data (XDG_DATA_HOME).
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "platform/seam.h"

namespace tarnwick::program {

/// Identity of the running program. The file name decides titles and the settings file.
struct Identity {
  std::filesystem::path folder;  ///< What the program keeps, absolute, no trailing separator.
  std::string name;              ///< The program's file name without its extension.
  std::int32_t major = 0;
  std::int32_t minor = 0;
  std::int32_t revision = 0;
  std::string file = {};  ///< The program's file name; empty where that is `name`.
  std::filesystem::path place = {};  ///< Where an installed program lies; empty where that is `folder`.
};

/// What the names of program files end in; nothing where a mode tells them apart.
extern const std::string_view kFileEnding;

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

/// The folder in which the user's programs keep their data, absolute; empty where the system names none.
std::filesystem::path UserData();

/// Whether a window could be shown, as far as that can be told without a toolkit.
bool HasDisplay();

/// The running program's file.
std::filesystem::path Executable();
/// Whether the system's packages installed it, and renew it.
bool IsInstalled();
/// Where the program is to keep things whose libraries lie in `libraries`: there as well, or in the user's folder.
std::filesystem::path FolderOf(const std::filesystem::path& libraries);
/// Where the program's own libraries lie.
std::filesystem::path LibraryFolder();

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
