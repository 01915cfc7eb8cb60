// The journal of an update of the program's files, and what else of it lies in the program's folder.
//
//   WebUpdate.journal    names the update and how far it is; there is none while there is nothing to do
//   WebUpdate.DIGITS/    what was fetched, under the names that it is for; in old/ the release before
//   WebUpdate.refused    the release that was taken back last, which is not offered again
//   WebUpdate.sh         starts the program again, once
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tarnwick {

/// What all files of an update begin with; no file of a release does.
inline constexpr std::string_view kUpdatePrefix = "WebUpdate.";

/// A file that an update replaces.
struct OldFile {
  std::string name;    ///< Where it is installed.
  std::string digest;  ///< Of what it was before; empty where there was none.
};

struct Journal {
  enum class State {
    Staged,   ///< All files lie in the folder of the update; none is installed.
    Moving,   ///< The old files are copied; the new ones are put into place, the program last.
    Moved,    ///< All are in place, and the new program has yet to show its first page.
    Back,     ///< The old files are put back, the program first.
    Refused,  ///< The same, and the release is not to be offered again.
  };

  State state = State::Staged;
  std::string folder;        ///< Of the update, by name.
  std::string program;       ///< The program's file name.
  std::string version;       ///< Of the release.
  std::string signature;     ///< Of the release.
  std::vector<OldFile> old;  ///< From `Moving` on: what is replaced, the program first if it is among them.
  std::string lists;         ///< As `Release` has them.
};

/// The journal in `folder`. None where there is none, and where it is not whole or names what it may not: a
/// journal is put in place whole, so that one was not made here, and is left to the user. `error` where one
/// may be there that cannot be read: nothing is to be concluded then.
std::optional<Journal> ReadJournal(const std::filesystem::path& folder, std::error_code& error);
std::optional<Journal> ReadJournal(const std::filesystem::path& folder);
/// Replaces it, durably.
std::error_code WriteJournal(const std::filesystem::path& folder, const Journal& journal);
/// Removes journal and update, in this order. An error where the journal is still there.
std::error_code DropJournal(const std::filesystem::path& folder);

/// A folder for an update, made empty; its name in `name`.
std::error_code MakeUpdateFolder(const std::filesystem::path& folder, std::string& name);
/// Deletes the folders of updates that no journal names. To be called while no other instance fetches.
void SweepUpdates(const std::filesystem::path& folder);

/// A release that was taken back.
struct RefusedRelease {
  std::string version;
  std::string signature;
  bool told = false;  ///< The user knows.
};
std::optional<RefusedRelease> ReadRefused(const std::filesystem::path& folder);
std::error_code WriteRefused(const std::filesystem::path& folder, const RefusedRelease& refused);

}  // namespace tarnwick
