// tarnwick-mount: the simulated mount on a pseudo terminal.
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <string>

#include "mount/Console.h"
#include "mount/Endpoint.h"
#include "mount/Mount.h"
#include "mount/Options.h"
#include "mount/Terminal.h"

namespace {

using namespace tarnwick::mount;
using std::chrono::milliseconds;

/// How often the terminal is looked after while nothing happens.
constexpr milliseconds kRound(250);

Endpoint::Time Now() {
  return std::chrono::duration_cast<Endpoint::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

void Say(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

/// Signals that end the program, readable as a file, so that it ends in order.
int EndingSignals() {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) ::sigaddset(&set, number);
  ::sigprocmask(SIG_BLOCK, &set, nullptr);
  // A reader that went away, or standard input of a terminal in the background, is no reason to end.
  for (const int number : {SIGPIPE, SIGTTIN, SIGTTOU}) ::signal(number, SIG_IGN);
  return ::signalfd(-1, &set, SFD_CLOEXEC);
}

/// Commands from standard input. False when it has ended.
bool ReadCommands(std::string& pending, Console& console) {
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  if (count <= 0) return false;
  pending.append(buffer.data(), static_cast<std::size_t>(count));
  for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
    Say(console.Execute(pending.substr(0, end)));
    pending.erase(0, end + 1);
  }
  return true;
}

int Timeout(const Endpoint& endpoint) {
  const auto due = endpoint.Due();
  if (!due) return static_cast<int>(kRound.count());
  const auto left = std::chrono::ceil<milliseconds>(*due - Now());
  return static_cast<int>(std::clamp(left, milliseconds(0), kRound).count());
}

void Serve(const Options& options, Terminal& terminal, int signals) {
  Mount mount(options.path);
  for (const auto& [address, setup] : options.devices) mount.Put(address, setup);
  Endpoint endpoint(mount);
  Console console(mount, endpoint);
  std::string pending;
  std::array<pollfd, 3> sources = {
      {{terminal.Descriptor(), POLLIN, 0}, {signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
  Say("ready " + terminal.Path() + "\n");
  while (!console.Quit()) {
    const int ready = ::poll(sources.data(), sources.size(), Timeout(endpoint));
    if (ready < 0) continue;
    if (ready == 0) terminal.ClearStaleMark();
    if (sources[1].revents != 0) return;
    if (sources[2].revents != 0 && !ReadCommands(pending, console)) {
      if (options.untilEof) return;
      sources[2].fd = -1;
    }
    const bool readable = (sources[0].revents & POLLIN) != 0;
    terminal.Write(readable ? endpoint.Receive(terminal.Read(), Now()) : endpoint.Tick(Now()));
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string error;
  const std::optional<Options> options = ParseOptions({argv + 1, argv + argc}, error);
  if (options && options->help) {
    Say(std::string(Usage()));
    return 0;
  }
  const int signals = EndingSignals();
  Terminal terminal;
  if (!options || !terminal.Open(options->link, error)) {
    std::fprintf(stderr, "tarnwick-mount: %s\n", error.c_str());
    return options ? 1 : 2;
  }
  Serve(*options, terminal, signals);
  return 0;
}
