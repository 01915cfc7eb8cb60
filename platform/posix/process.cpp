#include "platform/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string>
#include <utility>

#include "posix.h"

namespace tarnwick::process {
namespace {

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

/// In the new process: becomes the command, whose input and output `socket` is.
[[noreturn]] void BecomeChild(char* const* command, int socket) {
  ::dup2(socket, STDIN_FILENO);
  ::dup2(socket, STDOUT_FILENO);
  ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
  ::execv(command[0], command);
  ::_exit(127);
}

}  // namespace

bool StartFollower(const Command& command) {
  if (const Starter* const other = Seam<Starter>::Used()) return other->start(command);
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

std::error_code Child::Start(const Command& command) {
  Stop();
  Command words = command;
  const std::vector<char*> pointers = Pointers(words);
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) return posix::LastError();
  mProcess = ::fork();
  if (mProcess == 0) BecomeChild(pointers.data(), sockets[1]);
  const std::error_code error = mProcess < 0 ? posix::LastError() : std::error_code();
  ::close(sockets[1]);
  mSocket = sockets[0];
  return error;
}

bool Child::Send(std::string_view text) {
  return ::send(mSocket, text.data(), text.size(), MSG_NOSIGNAL) >= 0;
}

bool Child::Receive(std::string& text, std::chrono::milliseconds limit) {
  std::array<char, 4096> piece;
  pollfd waiting{mSocket, POLLIN, 0};
  if (::poll(&waiting, 1, static_cast<int>(limit.count())) <= 0) return false;
  const ssize_t count = ::recv(mSocket, piece.data(), piece.size(), 0);
  if (count > 0) text.append(piece.data(), static_cast<std::size_t>(count));
  return count > 0;
}

int Child::Stop() {
  if (mSocket >= 0) ::close(std::exchange(mSocket, -1));  // One that waits to be read goes on.
  if (mProcess <= 0) return -1;
  int status = 0;
  ::kill(mProcess, SIGTERM);
  ::waitpid(std::exchange(mProcess, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::error_code Beside::Start(const Command& command) {
  Command words = command;
  const int error =
      ::posix_spawn(&mProcess, words[0].c_str(), nullptr, nullptr, Pointers(words).data(), environ);
  if (error != 0) mProcess = -1;
  return {error, std::generic_category()};
}

bool Beside::Runs() {
  if (mProcess < 0) return false;
  int status = 0;
  if (::waitpid(mProcess, &status, WNOHANG) == 0) return true;
  mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  mProcess = -1;
  return false;
}

void Beside::Kill() {
  if (mProcess < 0) return;
  ::kill(mProcess, SIGKILL);
  ::waitpid(mProcess, nullptr, 0);
  mProcess = -1;
}

std::error_code Become(const std::filesystem::path& path) {
  Command words{path.string()};
  // What the system tells of this one: each word ended by a null character, the program's own name first.
  std::ifstream told("/proc/self/cmdline", std::ios::binary);
  std::string word;
  for (bool own = true; std::getline(told, word, '\0'); own = false)
    if (!own) words.push_back(word);
  ::execv(words[0].c_str(), Pointers(words).data());
  return posix::LastError();
}

}  // namespace tarnwick::process
