// A program that is killed: owner, pages, run and link in a process of their own, before a mount that lives
// on in this one.
#pragma once

#include <string>
#include <vector>

#include "World.h"

namespace tarnwick::campaign {

/// Plays the case in processes of this program file, started with `arguments` and "--player FD". The first
/// one gets SIGKILL at the drawn call of its first run: before it, in the midst of the bytes that it sends,
/// or a moment later. What the owner of the last one reports; the notes are those of all.
Report PlayKilled(const Case& played, World& world, const std::vector<std::string>& arguments);

/// In such a process: plays the case against the world at the other end of `socket`. The exit status.
int PlayAsPlayer(const Case& played, int socket, const std::filesystem::path& folder);

}  // namespace tarnwick::campaign
