// A fetched release put into the place of the installed one: all of it or nothing.
//
// The start of the program is the one place that swaps, before the link library is loaded and with the lock
// of the folder held alone. What it does goes by the journal and by what really lies on the disk. At each
// moment either all installed files are of the release before, or the program under its name still is: so
// whatever program starts next can go on, or go back.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "webupdate/Journal.h"

namespace tarnwick {

/// Why an update was not installed, or was taken back.
struct Setback {
  enum class Kind {
    None,
    NotBelieved,    ///< Nobody whom this program knows has signed the list, or it is for another system.
    Older,          ///< The release is older than this program.
    Missing,        ///< A file is neither installed nor fetched.
    NotTheFile,     ///< What was fetched is not what the list names.
    Installed,      ///< All of it is in place already.
    CannotRun,      ///< The new program, or the new library, does not run on this computer.
    NotTried,       ///< Whether they run could not be found out just now.
    NotStarted,     ///< The new program could not be started.
    EndedEarly,     ///< It ended too often before its first page.
    BegunBefore,    ///< An earlier start began to take it back.
    UnpackedAnew,   ///< The files are neither the old nor the new ones: somebody unpacked the program again.
    NoWayBack,      ///< The copy of an old file is gone.
    NotReadOrMoved  ///< The system did not read, write or move a file.
  };
  Kind kind = Kind::None;
  std::string file = {};       ///< By name; empty where it is no single one.
  std::error_code cause = {};  ///< None where no call failed.
};

/// In words, for the record.
std::string SetbackText(const Setback& why);

/// What became of an update.
struct Settlement {
  enum class What {
    Nothing,    ///< There was none, or one that is in place and waits for its first page.
    Dropped,    ///< What is installed stays; what was fetched has gone.
    Swapped,    ///< All files are of the new release.
    TakenBack,  ///< All files are of the release before again.
    Failed,     ///< Neither; the journal is still there.
  };
  What what = What::Nothing;
  Setback why = {};  ///< Of all but `Nothing` and `Swapped`.
};

/// Whether a program can be started at all: `CannotRun` where it never will, `NotTried` where that could not
/// be found out, so that nothing is to be concluded.
using CanRun = std::function<Setback(const std::filesystem::path& program)>;

/// Finishes the update that the journal in `folder` names, or undoes it. `program` is the running program's
/// file name. The lock of the folder has to be held alone.
Settlement SettleUpdate(const std::filesystem::path& folder, const std::string& program,
                        const CanRun& canRun);

/// Undoes an update that is in place and does not work, for that reason; it is not offered again. The lock as
/// above.
Settlement TakeBack(const std::filesystem::path& folder, const Setback& why);

/// Notes that the new program begins, so that two that ended before their first page are known.
void NoteAttempt(const std::filesystem::path& folder, const Journal& journal);
/// Forgets the last one, which could not come to its first page whatever it was worth.
void ForgetAttempt(const std::filesystem::path& folder, const Journal& journal);
/// How many have begun.
int Attempts(const std::filesystem::path& folder, const Journal& journal);
/// So many that ended are enough.
inline constexpr int kMostAttempts = 2;

/// The new program has shown its first page: the release before goes. Sweeps what was left of others.
std::error_code ConfirmUpdate(const std::filesystem::path& folder);

/// Writes the script that starts the program again once this process has ended, and starts it. False when it
/// could not be: there is none then.
bool StartAgain(const std::filesystem::path& folder, const std::filesystem::path& program);

}  // namespace tarnwick
