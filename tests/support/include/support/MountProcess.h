// The tarnwick-mount process, for tests over a real pseudo terminal.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/TempFolder.h"

namespace tarnwick::test {

/// A tarnwick-mount whose terminal is the port COM5 of `folder`. What it plays is not shown.
class MountProcess {
 public:
  MountProcess(const char* program, const TempFolder& folder, const std::string& revision = "2",
               const std::string& baud = "115200") {
    std::filesystem::create_directories(folder / "ports");
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (::pipe2(in.data(), O_CLOEXEC) != 0 || ::pipe2(out.data(), O_CLOEXEC) != 0) return;
    const std::string link = folder / "ports/COM5";
    mPid = ::fork();
    if (mPid == 0) {
      ::dup2(in[0], STDIN_FILENO);
      ::dup2(out[1], STDOUT_FILENO);
      ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
      ::execl(program, program, "--link", link.c_str(), "--until-eof", "--revision", revision.c_str(),
              "--baud", baud.c_str(), nullptr);
      ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    mIn = ::fdopen(in[1], "w");
    mOut = ::fdopen(out[0], "r");
    ready = Line();
  }
  ~MountProcess() { End(SIGKILL); }
  MountProcess(const MountProcess&) = delete;
  MountProcess& operator=(const MountProcess&) = delete;

  /// One line of its output, without the line feed; empty at its end.
  std::string Line() {
    std::array<char, 256> buffer{};
    if (std::fgets(buffer.data(), buffer.size(), mOut) == nullptr) return {};
    return std::string(buffer.data(), std::strcspn(buffer.data(), "\n"));
  }
  std::string Ask(const std::string& command) {
    std::fprintf(mIn, "%s\n", command.c_str());
    std::fflush(mIn);
    return Line();
  }
  /// Its exit status, or -1 when a signal ended it.
  int End(int signal) {
    if (mPid <= 0) return -1;
    int status = 0;
    ::kill(mPid, signal);
    ::waitpid(mPid, &status, 0);
    mPid = -1;
    std::fclose(mIn);
    std::fclose(mOut);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string ready;

 private:
  pid_t mPid = -1;
  FILE* mIn = nullptr;
  FILE* mOut = nullptr;
};

}  // namespace tarnwick::test
