#include "Tracer.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>

namespace tarnwick::test {
namespace {

constexpr long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                          PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL;
constexpr auto kPatience = std::chrono::seconds(20);

/// Calls behind which files, locks or processes may be others than before.
bool Counts(long call) {
  constexpr long kCalls[] = {SYS_open,  SYS_openat, SYS_write,  SYS_rename,    SYS_unlink,     SYS_unlinkat,
                             SYS_mkdir, SYS_rmdir,  SYS_fsync,  SYS_fchmod,    SYS_fcntl,      SYS_flock,
                             SYS_clone, SYS_vfork,  SYS_fork,   SYS_execve,    SYS_exit_group, SYS_wait4,
                             SYS_pipe2, SYS_dup2,   SYS_setsid, SYS_utimensat, SYS_clone3,     SYS_renameat2};
  return std::find(std::begin(kCalls), std::end(kCalls), call) != std::end(kCalls);
}

/// The call at which a process stopped.
long CallOf(pid_t process) {
  user_regs_struct registers{};
  return ::ptrace(PTRACE_GETREGS, process, nullptr, &registers) == 0 ? static_cast<long>(registers.orig_rax)
                                                                     : -1;
}

pid_t Start(const std::string& folder, const std::vector<std::string>& command) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  if (::chdir(folder.c_str()) == 0) ::execv(words[0], words.data());
  ::_exit(127);
}

}  // namespace

int RunTraced(const std::string& folder, const std::vector<std::vector<std::string>>& commands, int killAt,
              int othersAt) {
  std::map<pid_t, bool> inCall;  // of each process that runs
  std::size_t next = 0;
  const auto startNext = [&] { inCall[Start(folder, commands[next++])] = false; };
  const auto end = std::chrono::steady_clock::now() + kPatience;
  int calls = 0;
  bool late = false;
  std::map<pid_t, bool> begun;
  while (!inCall.empty() || next < commands.size()) {
    while (next < commands.size() && (next == 0 || calls >= othersAt || inCall.empty())) startNext();
    int status = 0;
    const pid_t process = ::waitpid(-1, &status, __WALL);
    if (process < 0) break;
    if (WIFEXITED(status) || WIFSIGNALED(status)) {
      inCall.erase(process);
      continue;
    }
    if (std::chrono::steady_clock::now() > end) late = true;
    if (late) {
      ::kill(process, SIGKILL);
      ::ptrace(PTRACE_CONT, process, nullptr, nullptr);
      continue;
    }
    int signal = WSTOPSIG(status);
    bool& inside = inCall[process];
    if (!begun[process]) {
      begun[process] = true;
      ::ptrace(PTRACE_SETOPTIONS, process, nullptr, kOptions);
    }
    if (signal == (SIGTRAP | 0x80)) {
      inside = !inside;
      if (inside && Counts(CallOf(process)) && ++calls == killAt) ::kill(process, SIGKILL);
      signal = 0;
    }
    if (signal == SIGTRAP || signal == SIGSTOP) signal = 0;
    ::ptrace(PTRACE_SYSCALL, process, nullptr, reinterpret_cast<void*>(static_cast<long>(signal)));
  }
  return late ? -1 : calls;
}

}  // namespace tarnwick::test
