// The real keeper of the computer's wakefulness.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/awake.h"

namespace tarnwick::awake {
namespace {

/// Holds a lock of the system's login manager against shutdown, sleep, idleness and the closed lid, by its
/// program `systemd-inhibit`. Where there is none, or it is refused, nothing happens and nothing is said.
///
/// The lock lives as long as a pipe to that program, so that it goes with this process however that ends.
class SleepInhibitor final : public IKeeper {
 public:
  SleepInhibitor() { Seam<IKeeper>::Install(*this); }
  ~SleepInhibitor() override {
    Seam<IKeeper>::Uninstall();
    LetGo();
  }
  SleepInhibitor(const SleepInhibitor&) = delete;
  SleepInhibitor& operator=(const SleepInhibitor&) = delete;

  void Keep() override;
  void LetGo() override;

 private:
  int mPipe = -1;  ///< Its far end is the program's input.
  pid_t mProcess = -1;
};

/// Starts the program with `input` as its standard input and the rest thrown away; -1 when it cannot.
pid_t Start(int input) {
  std::array<const char*, 7> arguments{"systemd-inhibit",
                                       "--what=shutdown:sleep:idle:handle-lid-switch",
                                       "--mode=block",
                                       "--who=Tarnwick",
                                       "--why=Working on the telescope mount",
                                       "cat",  // until its input ends
                                       nullptr};
  posix_spawn_file_actions_t files;
  if (::posix_spawn_file_actions_init(&files) != 0) return -1;
  ::posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = -1;
  const int error = ::posix_spawnp(&process, arguments.front(), &files, nullptr,
                                   const_cast<char* const*>(arguments.data()), environ);
  ::posix_spawn_file_actions_destroy(&files);
  return error == 0 ? process : -1;
}

void SleepInhibitor::Keep() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
  mProcess = Start(ends[0]);
  ::close(ends[0]);
  mPipe = ends[1];
}

void SleepInhibitor::LetGo() {
  if (mPipe >= 0) ::close(mPipe);
  mPipe = -1;
  if (mProcess <= 0) return;
  // The end of its input ends it, but not while it still waits for the login manager.
  ::kill(mProcess, SIGTERM);
  while (::waitpid(mProcess, nullptr, 0) < 0 && errno == EINTR) {
  }
  mProcess = -1;
}

}  // namespace

std::unique_ptr<IKeeper> SystemKeeper() {
  return std::make_unique<SleepInhibitor>();
}

}  // namespace tarnwick::awake
