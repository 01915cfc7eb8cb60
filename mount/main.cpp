// tarnwick-mount: the simulated mount on a pseudo terminal.
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <string>

#include "mount/Console.h"
#include "mount/Endpoint.h"
#include "mount/Faults.h"
#include "mount/Line.h"
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

/// What is played goes to standard error, so that answers stay by themselves.
void Tell(const std::string& text) {
  std::fprintf(stderr, "tarnwick-mount: %s\n", text.c_str());
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

/// How long to sleep. On a paced line the last bit of the way to a moment is watched, not slept, and so is
/// the time in which the next request is likely: waking up would cost what a byte takes.
timespec Timeout(const Line& line, Line::Time lastSent) {
  constexpr Line::Time kWatched(100);
  constexpr Line::Time kTurnAround(300);
  const Line::Time now = Now();
  Line::Time left = kRound;
  if (const auto due = line.Due()) left = std::clamp(*due - now, Line::Time(0), left);
  if (line.setup.paced) left = now - lastSent < kTurnAround ? Line::Time(0) : left - std::min(left, kWatched);
  return {left.count() / 1'000'000, left.count() % 1'000'000 * 1000};
}

void Serve(const Options& options, Terminal& terminal, int signals) {
  Mount mount(options.path);
  for (const auto& [address, setup] : options.devices) mount.Put(address, setup);
  Endpoint endpoint(mount);
  Line line(endpoint);
  line.setup = options.line;
  Faults faults(mount, line, Tell);
  for (const std::string& fault : options.faults) faults.Play(fault);
  Console console(mount, line, faults);
  std::string pending;
  Line::Time lastSent{};
  std::array<pollfd, 3> sources = {
      {{terminal.Descriptor(), POLLIN, 0}, {signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
  Say("ready " + terminal.Path() + "\n");
  while (!console.Quit()) {
    const timespec timeout = Timeout(line, lastSent);
    if (timeout.tv_sec == 0 && timeout.tv_nsec == 0) ::sched_yield();
    const int ready = ::ppoll(sources.data(), sources.size(), &timeout, nullptr);
    if (ready < 0) continue;
    if (ready == 0 && !line.Due()) terminal.ClearStaleMark();
    if (sources[1].revents != 0) return;
    if (sources[2].revents != 0 && !ReadCommands(pending, console)) {
      if (options.untilEof) return;
      sources[2].fd = -1;
    }
    const int speed = terminal.Speed();
    if ((sources[0].revents & POLLIN) != 0) line.Send(terminal.Read(), speed, Now());
    const tarnwick::wire::Bytes arrived = line.Take(speed, Now());
    if (!arrived.empty()) lastSent = Now();
    terminal.Write(arrived);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string error;
  const std::optional<Options> options = ParseOptions({argv + 1, argv + argc}, error);
  if (options && options->help) {
    Say(std::string(Usage()) + std::string(FaultUsage()));
    return 0;
  }
  const int signals = EndingSignals();
  ::prctl(PR_SET_TIMERSLACK, 1UL);  // bytes of a paced line are on time
  Terminal terminal;
  if (!options || !terminal.Open(options->link, error)) {
    std::fprintf(stderr, "tarnwick-mount: %s\n", error.c_str());
    return options ? 1 : 2;
  }
  Serve(*options, terminal, signals);
  return 0;
}
