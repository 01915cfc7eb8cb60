// Fetched files put into the place of the program's own, all of them or none.
//
// A journal in the program's folder names the swap. It is the one thing that decides: written after every
// fetched file lies beside the old ones and is flushed, and removed when the last one has its name. A
// script does the swap once the program has ended; where it was cut, the next start completes it.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace tarnwick {

/// Two names in the program's folder.
struct SwapFile {
  std::string fetched;    ///< Where the new contents lie: begins with "$".
  std::string installed;  ///< The name that they are for.
};

/// The script, the same for every swap: what differs are its arguments, which no shell reads.
std::string_view SwapScript();

/// Writes script and journal into `folder`. On an error neither is there.
std::error_code WriteSwap(const std::filesystem::path& folder, const std::vector<SwapFile>& files);

/// Starts the written script; it waits for this process to end, puts the files into place and starts
/// `program`. False when it could not be started: the swap is off then, and the old files stay.
bool StartSwap(const std::filesystem::path& folder, const std::vector<SwapFile>& files,
               const std::filesystem::path& program);

enum class Unfinished { None, Completed, Failed };

/// Completes the swap that the journal in `folder` names, if there is one. After `Completed` the running
/// program may be the old one. After `Failed` the journal is still there.
Unfinished CompleteSwap(const std::filesystem::path& folder);

}  // namespace tarnwick
