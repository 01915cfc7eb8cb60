// The swap of version 2.2.4 as first released. It fetched each file under its name with a "$" in front, and a
// script moved them one by one, by a journal of its own form. Cut in between, it leaves the new program, which
// is this one, beside files of the release before.
#pragma once

#include <filesystem>
#include <system_error>

namespace tarnwick {

/// Whether `folder` has the journal of one.
bool HasEarlierSwap(const std::filesystem::path& folder);

/// Gives the remaining files their names, and removes journal and script. A file counts that is signed for this
/// program's version, or for its own date. An error where program or library of that release is neither in
/// place nor there to be moved; the journal stays then. One that has nothing to do with this program goes: the
/// program was unpacked anew. The lock of the folder has to be held alone.
std::error_code CompleteEarlierSwap(const std::filesystem::path& folder);

}  // namespace tarnwick
