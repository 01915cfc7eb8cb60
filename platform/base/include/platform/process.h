// Other processes, and this one begun anew.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tarnwick::process {

/// A command and its arguments, handed on as they are: no shell reads them.
using Command = std::vector<std::string>;

/// Starts a command that outlives this process and of which nothing is seen. Its standard input ends when
/// this process does, however that comes. False when it could not be started.
bool StartFollower(const Command& command);

/// Replaces the way followers are started, for tests.
void SetStarter(std::function<bool(const Command&)> starter);

/// Runs the program `path` in the place of this one. Returns only where that fails.
void Become(const std::filesystem::path& path);

}  // namespace tarnwick::process
