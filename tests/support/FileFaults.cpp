#include "support/FileFaults.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace tarnwick::test {
namespace {

Fault gFault = Fault::Fail;
int gAt = 0;  ///< The call that goes wrong, from 1; 0 for none.
std::vector<std::string> gCalls;

/// True when the call at hand fails.
bool Faulty(const std::string& call) {
  gCalls.push_back(call);
  if (static_cast<int>(gCalls.size()) != gAt) return false;
  if (gFault == Fault::Kill) ::raise(SIGKILL);
  errno = ENOSPC;
  return true;
}

/// `work` with its call number `at` gone wrong. False when it has not that many.
bool RunFaulty(Fault fault, int at, const std::function<void()>& work) {
  gFault = fault, gAt = at;
  gCalls.clear();
  const pid_t child = fault == Fault::Kill ? ::fork() : -1;
  if (child <= 0) work();
  if (child == 0) ::_exit(0);
  gAt = 0;
  int status = 0;
  if (child > 0) ::waitpid(child, &status, 0);
  return WIFSIGNALED(status) || static_cast<int>(gCalls.size()) >= at;
}

std::string Named(const char* path) {
  return std::string(" ") + ::basename(path);
}

}  // namespace

int EachFault(const std::function<void()>& prepare, const std::function<void()>& work,
              const std::function<void(Fault)>& check) {
  int faults = 0;
  for (const Fault fault : {Fault::Fail, Fault::Kill}) {
    bool met = true;
    for (int at = 1; met; ++at) {
      prepare();
      met = RunFaulty(fault, at, work);
      check(fault);
      faults += met;
    }
  }
  return faults;
}

std::vector<std::string> FileCalls(const std::function<void()>& work) {
  gCalls.clear();
  work();
  std::erase(gCalls, "");
  return gCalls;
}

// The linker's names, which no header has. What is not told has no name.
#define WRAP(result, name, parameters, arguments, told) \
  extern "C" result __real_##name parameters;           \
  extern "C" result __wrap_##name parameters {          \
    return Faulty(told) ? -1 : __real_##name arguments; \
  }
// Where the caller gives no mode there is any, and the system does not look at it.
WRAP(int, open, (const char* path, int flags, mode_t mode), (path, flags, mode), "")
WRAP(ssize_t, write, (int fd, const void* data, size_t size), (fd, data, size), "")
WRAP(int, fsync, (int fd), (fd), "fsync")
WRAP(int, fchmod, (int fd, mode_t mode), (fd, mode), "")
WRAP(int, rename, (const char* from, const char* to), (from, to), "rename" + Named(from) + Named(to))
WRAP(int, unlink, (const char* path), (path), "unlink" + Named(path))
WRAP(int, utimensat, (int folder, const char* path, const timespec* times, int flags),
     (folder, path, times, flags), "")

}  // namespace tarnwick::test
