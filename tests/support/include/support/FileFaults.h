// Faults in what the program does to files. Where `tests_file_faults` is linked, its calls pass through
// here by the linker's `--wrap`, to be told, failed, or cut by the end of the process.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnwick::test {

enum class Fault { Fail, Kill };

/// Runs `prepare`, `work` and `check` over and over. In the nth round the nth call of `work` fails with
/// ENOSPC, until a round has met no fault; then all again with `work` in a child, which is killed there,
/// in the middle of it where it writes. Gives the number of rounds with a fault.
int EachFault(const std::function<void()>& prepare, const std::function<void()>& work,
              const std::function<void(Fault)>& check);

/// A call that changed a file or a folder, or flushed it.
struct FileCall {
  std::string call =
      {};  ///< "create", "write", "fchmod", "fsync", "rename", "unlink", "mkdir" or "utimensat"
  std::string path = {};
  std::string to = {};
  std::string data = {};
  unsigned mode = 0;
};

/// Those of `work` that succeeded, in order.
std::vector<FileCall> DoneCalls(const std::function<void()>& work);

}  // namespace tarnwick::test
