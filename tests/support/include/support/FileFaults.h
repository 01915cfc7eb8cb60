// Faults in what the program does to files. Where `tests_file_faults` is linked, its calls pass through
// here by the linker's `--wrap`, to be told, failed, or cut by the end of the process.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick::test {

enum class Fault { Fail, Kill };

/// Runs `prepare`, `work` and `check` over and over. In the nth round the nth call of `work` fails with
/// ENOSPC; or `work` runs in a child, which is killed there, in the middle of it where it writes. Ends
/// behind the first round without a fault, which is checked too. Gives the number of rounds with one.
int EachFault(Fault fault, const std::function<void()>& prepare, const std::function<void()>& work,
              const std::function<void()>& check);

/// The calls of `work` in order, as "rename a b", "unlink a" and "fsync": names without their folders.
std::vector<std::string> FileCalls(const std::function<void()>& work);

}  // namespace tarnwick::test
