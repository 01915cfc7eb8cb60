#include "mount/MountProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <utility>

namespace tarnwick::mount {
namespace {

constexpr int kPatience = 5000;  // milliseconds

/// What the child becomes, whose input and output `socket` is. What the mount plays, which it tells on
/// standard error, is not shown.
[[noreturn]] void Become(char* const* command, int socket) {
  ::dup2(socket, STDIN_FILENO);
  ::dup2(socket, STDOUT_FILENO);
  ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
  ::execv(command[0], command);
  ::_exit(127);
}

}  // namespace

bool MountProcess::Start(const std::filesystem::path& program, const std::filesystem::path& link,
                         std::vector<std::string> options) {
  Stop();
  std::error_code error;
  std::filesystem::create_directories(link.parent_path(), error);
  options.insert(options.begin(), {program, "--link", link, "--until-eof"});
  std::vector<char*> command;
  for (std::string& option : options) command.push_back(option.data());
  command.push_back(nullptr);
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) return false;
  mChild = ::fork();
  if (mChild == 0) Become(command.data(), sockets[1]);
  ::close(sockets[1]);
  mSocket = sockets[0];
  if (mChild < 0) return false;
  constexpr std::string_view kReady = "ready ";
  const std::string line = Line();
  if (!line.starts_with(kReady)) return false;
  mDevice = line.substr(kReady.size(), line.size() - kReady.size() - 1);
  return true;
}

int MountProcess::Stop() {
  if (mSocket >= 0) ::close(std::exchange(mSocket, -1));  // A mount that waits to be read goes on.
  mArrived.clear();
  if (mChild <= 0) return -1;
  int status = 0;
  ::kill(mChild, SIGTERM);
  ::waitpid(std::exchange(mChild, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string MountProcess::Line() {
  std::size_t end = 0;
  while ((end = mArrived.find('\n')) == std::string::npos) {
    std::array<char, 4096> piece;
    pollfd waiting{mSocket, POLLIN, 0};
    const ssize_t count =
        ::poll(&waiting, 1, kPatience) > 0 ? ::recv(mSocket, piece.data(), piece.size(), 0) : 0;
    if (count <= 0) return {};
    mArrived.append(piece.data(), static_cast<std::size_t>(count));
  }
  const std::string line = mArrived.substr(0, end + 1);
  mArrived.erase(0, end + 1);
  return line;
}

std::string MountProcess::Ask(const std::string& command) {
  const std::string line = command + "\n";
  if (::send(mSocket, line.data(), line.size(), MSG_NOSIGNAL) < 0) return {};
  std::string answer;
  for (std::string next = Line(); !next.empty(); next = Line()) {
    answer += next;
    if (next == "ok\n" || next == "end\n" || next.starts_with("error: ")) return answer;
  }
  return {};
}

void MountProcess::State(std::int32_t address, std::string_view state) {
  Ask("state " + std::to_string(address) + " " + std::string(state));
}

void MountProcess::Poke(std::int32_t address, std::int32_t word, std::int32_t value) {
  Ask("poke " + std::to_string(address) + " " + std::to_string(word) + " " + std::to_string(value));
}

std::vector<std::int32_t> MountProcess::Dump(std::int32_t address) {
  constexpr std::string_view kEnd = "end\n";
  const std::string answer = Ask("dump " + std::to_string(address));
  std::vector<std::int32_t> words;
  if (!answer.ends_with(kEnd)) return words;
  std::istringstream listed(answer.substr(0, answer.size() - kEnd.size()));
  for (std::int32_t word = 0; listed >> std::hex >> word;) words.push_back(word);
  return words;
}

}  // namespace tarnwick::mount
