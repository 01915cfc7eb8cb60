// A program and all that it starts, run to their end, one of them killed at one of its calls of the system.
#pragma once

#include <string>
#include <vector>

namespace tarnwick::test {

/// Runs the commands in the folder `folder`: the first at once, the others beside it from the call `othersAt`
/// on. Only calls that change files, locks or processes count. Gives how many there were; a process still
/// there after seconds is killed, and -1 given.
int RunTraced(const std::string& folder, const std::vector<std::vector<std::string>>& commands, int killAt,
              int othersAt = 0);

}  // namespace tarnwick::test
