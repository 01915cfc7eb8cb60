#include "support/FileFaults.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <map>

namespace tarnwick::test {
namespace {

Fault gFault = Fault::Fail;
int gAt = 0;                  ///< The call that goes wrong, from 1; 0 for none.
int gCalls = 0;               ///< Of those that are wrapped.
std::vector<FileCall> gDone;  ///< What succeeded, in order.
std::map<int, std::string> gOpen;

/// True when the call at hand fails. What `half` does of it is done before a kill.
template <class Half = void (*)()>
bool Faulty(Half half = [] {}) {
  if (++gCalls != gAt) return false;
  if (gFault == Fault::Kill) half(), ::raise(SIGKILL);
  errno = ENOSPC;
  return true;
}

/// `work` with its call number `at` gone wrong. False when it has not that many.
bool RunFaulty(Fault fault, int at, const std::function<void()>& work) {
  gFault = fault, gAt = at;
  gCalls = 0;
  const pid_t child = fault == Fault::Kill ? ::fork() : -1;
  if (fault == Fault::Fail || child == 0) work();
  if (child == 0) ::_exit(0);
  gAt = 0;
  int status = 0;
  if (child > 0) ::waitpid(child, &status, 0);
  return WTERMSIG(status) == SIGKILL || gCalls >= at;
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

std::vector<FileCall> DoneCalls(const std::function<void()>& work) {
  gDone.clear();
  work();
  return gDone;
}

// The linker's names, which no header has.
#define WRAP(name, parameters, arguments, done)      \
  extern "C" int __real_##name parameters;           \
  extern "C" int __wrap_##name parameters {          \
    if (Faulty()) return -1;                         \
    const int result = __real_##name arguments;      \
    if (result == 0) gDone.push_back(FileCall done); \
    return result;                                   \
  }
WRAP(fsync, (int fd), (fd), ({.call = "fsync", .path = gOpen[fd]}))
WRAP(fchmod, (int fd, mode_t mode), (fd, mode), ({.call = "fchmod", .path = gOpen[fd], .mode = mode}))
WRAP(mkdir, (const char* path, mode_t mode), (path, mode), ({.call = "mkdir", .path = path, .mode = mode}))
WRAP(rename, (const char* from, const char* to), (from, to), ({.call = "rename", .path = from, .to = to}))
WRAP(unlink, (const char* path), (path), ({.call = "unlink", .path = path}))
WRAP(utimensat, (int folder, const char* path, const timespec* times, int flags),
     (folder, path, times, flags), ({.call = "utimensat", .path = path}))
extern "C" ssize_t __real_write(int fd, const void* data, size_t size);
extern "C" ssize_t __wrap_write(int fd, const void* data, size_t size) {
  if (Faulty([=] { __real_write(fd, data, size / 2); })) return -1;
  gDone.push_back(
      {.call = "write", .path = gOpen[fd], .data = std::string(static_cast<const char*>(data), size)});
  return __real_write(fd, data, size);
}
extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  if (Faulty()) return -1;
  const int fd = __real_open(path, flags, mode);
  if (fd >= 0) gOpen[fd] = path;
  if (fd >= 0 && (flags & O_EXCL) != 0) gDone.push_back({.call = "create", .path = path, .mode = mode});
  return fd;
}

}  // namespace tarnwick::test
