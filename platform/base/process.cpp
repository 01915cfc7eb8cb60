#include "platform/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace tarnwick::process {
namespace {

std::function<bool(const Command&)> gStarter;

std::vector<char*> Pointers(Command& command) {
  std::vector<char*> pointers;
  for (std::string& word : command) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// In the new process: becomes the command, in a session of its own and as nobody's child, or tells
/// `failed` why not. Calls nothing that a copy of a process with threads may not call.
[[noreturn]] void BecomeFollower(char* const* command, int input, int failed) {
  const int nothing = ::open("/dev/null", O_WRONLY);
  if (nothing >= 0 && ::setsid() >= 0) {
    const pid_t follower = ::fork();
    if (follower > 0) ::_exit(0);
    if (follower == 0 && ::dup2(input, 0) == 0 && ::dup2(nothing, 1) == 1 && ::dup2(nothing, 2) == 2)
      ::execv(command[0], command);
  }
  const int error = errno;
  (void)!::write(failed, &error, sizeof error);
  ::_exit(1);
}

/// A pipe whose both ends are closed in other programs.
bool Pipe(std::array<int, 2>& ends) {
  return ::pipe2(ends.data(), O_CLOEXEC) == 0;
}

}  // namespace

bool StartFollower(const Command& command) {
  if (gStarter) return gStarter(command);
  Command words = command;
  const std::vector<char*> pointers = Pointers(words);
  std::array<int, 2> life{};
  std::array<int, 2> failure{};
  if (!Pipe(life)) return false;
  if (!Pipe(failure)) {
    for (const int end : life) ::close(end);
    return false;
  }
  const pid_t child = ::fork();
  if (child == 0) BecomeFollower(pointers.data(), life[0], failure[1]);
  ::close(life[0]);
  ::close(failure[1]);
  int error = 0;
  // Ends without a word when the command was there to take the process over.
  const bool started = child > 0 && ::read(failure[0], &error, sizeof error) == 0;
  if (child > 0) ::waitpid(child, nullptr, 0);
  ::close(failure[0]);
  // The writing end of a follower's input stays open on purpose: it is closed by the end of this process.
  if (!started) ::close(life[1]);
  return started;
}

void SetStarter(std::function<bool(const Command&)> starter) {
  gStarter = std::move(starter);
}

void Become(const std::filesystem::path& path) {
  Command words{path.string()};
  ::execv(words[0].c_str(), Pointers(words).data());
}

}  // namespace tarnwick::process
