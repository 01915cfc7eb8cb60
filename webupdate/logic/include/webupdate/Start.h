// The start of the program as far as updates are concerned, and what instances of it in one folder owe each
// other: each holds the folder's lock as a reader for as long as it runs, and who changes its files has it
// alone.
#pragma once

#include <string>
#include <system_error>
#include <vector>

#include "webupdate/Swap.h"

namespace tarnwick {

/// How the start goes on.
struct Beginning {
  enum class What {
    Go,      ///< Program, library and the rest are of one release.
    End,     ///< Another process is the program now: this one ends, with `status`.
    Failed,  ///< An update is neither done nor undone: no library may be loaded.
    Busy,    ///< Another instance has been changing the files for too long to wait.
    Waits,   ///< An update is neither done nor undone, and this program is not the one that settles it.
  };
  What what = What::Go;
  int status = 0;
  std::error_code cause = {};
};

/// Makes this process a reader of its folder and finishes or undoes what an update left to do. May go on as
/// another program and not return. To be called first, before the link library is loaded, and with the record
/// open: what was dropped, taken back or failed is told there.
Beginning BeginProgram(const CanRun& canRun);

/// For a program of the folder that is not renewed by its own start: makes this process a reader of the
/// folder without settling anything. An update that has not moved a file, or all, is no hindrance.
Beginning JoinFolder();

/// What the user is told in place of a start; empty for `Go` and `End`.
std::string WhyNoStart(const Beginning& beginning);

/// The argument that asks a program whether it can run at all; it answers by its exit status, and does
/// nothing else.
inline constexpr std::string_view kTrial = "--can-it-run";

/// Asks `program`. Only what it says itself, or the system of its file, tells that it cannot run: one that
/// says nothing within seconds, or for which there is no process or memory just now, was not tried.
Setback TryProgram(const std::filesystem::path& program);

/// There is no display after all: that this program does not come to its first page says nothing of it.
void TellUnseen();

/// Takes the program's folder alone, so that its files may be changed. On an error it is shared as before.
std::error_code ClaimFolder();
/// The other instances may start again.
void ShareFolder();

/// The first page is on view: an update has proved itself. Gives what the user is to be told of one that did
/// not, once; empty as a rule.
std::string FirstPageShown();

}  // namespace tarnwick
