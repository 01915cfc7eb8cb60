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

/// What became of an update.
struct Settlement {
  enum class What {
    Nothing,    ///< There was none, or one that is in place and waits for its first page.
    Dropped,    ///< The release before stays: what was fetched was not what the list names, or cannot run.
    Swapped,    ///< All files are of the new release.
    TakenBack,  ///< All files are of the release before again.
    Failed,     ///< Neither; the journal is still there.
  };
  What what = What::Nothing;
  std::error_code cause = {};  ///< Of what is told; none where no call failed.
};

/// Whether a program can be started at all.
using CanRun = std::function<bool(const std::filesystem::path& program)>;

/// Finishes the update that the journal in `folder` names, or undoes it. `program` is the running program's
/// file name. The lock of the folder has to be held alone.
Settlement SettleUpdate(const std::filesystem::path& folder, const std::string& program,
                        const CanRun& canRun);

/// Undoes an update that is in place and does not work; it is not offered again. The lock as above.
Settlement TakeBack(const std::filesystem::path& folder);

/// Notes that the new program begins, so that two that ended before their first page are known.
void NoteAttempt(const std::filesystem::path& folder, const Journal& journal);
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
