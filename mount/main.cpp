// tarnwick-mount: the simulated mount on a pseudo terminal.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "mount/Console.h"
#include "mount/Endpoint.h"
#include "mount/Faults.h"
#include "mount/Line.h"
#include "mount/Mount.h"
#include "mount/Options.h"
#include "platform/cli.h"
#include "platform/terminal.h"

namespace {

using namespace tarnwick::mount;
using std::chrono::milliseconds;
using tarnwick::Attendant;
using tarnwick::PseudoTerminal;

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

/// Carries the whole lines out that `pending` begins with; each is answered when `follow` has done its part.
template <class Follow>
void Execute(std::string& pending, Console& console, Follow&& follow) {
  for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
    const std::string answer = console.Execute(pending.substr(0, end));
    follow();
    Say(answer);
    pending.erase(0, end + 1);
  }
}

/// Takes the terminal away while its adapter is unplugged, and brings it back.
void FollowPlug(const Faults& faults, PseudoTerminal& terminal, bool& there) {
  if (there != faults.Vanished()) return;
  there = !there;
  if (!there) return terminal.Vanish();
  if (const std::error_code error = terminal.Appear()) Tell(error.message());
}

/// How long to sleep. On a paced line the last bit of the way to a moment is watched, not slept, and so is
/// the time in which the next request is likely: waking up would cost what a byte takes.
Line::Time Timeout(const Line& line, Line::Time lastSent) {
  constexpr Line::Time kWatched(100);
  constexpr Line::Time kTurnAround(300);
  const Line::Time now = Now();
  Line::Time left = kRound;
  if (const auto due = line.Due()) left = std::clamp(*due - now, Line::Time(0), left);
  if (line.setup.paced) left = now - lastSent < kTurnAround ? Line::Time(0) : left - std::min(left, kWatched);
  return left;
}

void Serve(const Options& options, PseudoTerminal& terminal, Attendant& attendant) {
  Mount mount(options.path);
  for (const auto& [address, setup] : options.devices) mount.Put(address, setup);
  Endpoint endpoint(mount);
  Line line(endpoint);
  line.setup = options.line;
  Faults faults(mount, line, Tell);
  for (const std::string& fault : options.faults) faults.Play(fault);
  Console console(mount, line, faults);
  std::string pending;
  bool there = true;
  Line::Time lastSent{};
  Say("ready " + terminal.Path() + "\n");
  while (!console.Quit()) {
    const Attendant::Arrival arrival = attendant.Wait(Timeout(line, lastSent));
    if (!arrival.Any() && !line.Due()) terminal.ClearStaleMark();
    if (arrival.ending) return;
    if (arrival.command && !attendant.TakeInput(pending) && options.untilEof) return;
    Execute(pending, console, [&] { FollowPlug(faults, terminal, there); });
    const int speed = terminal.Speed();
    if (arrival.bytes) line.Send(terminal.Read(), speed, Now());
    const tarnwick::wire::Bytes arrived = line.Take(speed, Now());
    FollowPlug(faults, terminal, there);
    if (!arrived.empty()) lastSent = Now();
    terminal.Write(arrived);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto words = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  const std::string help = std::string(Usage()) + std::string(FaultUsage());
  if (const auto answered = tarnwick::cli::AnswerCommonWords(words, "tarnwick-mount", help)) return *answered;
  std::string error;
  const std::optional<Options> options = ParseOptions({words.begin(), words.end()}, error);
  if (!options) {
    Tell(error);
    return 2;
  }
  PseudoTerminal terminal;
  Attendant attendant(terminal);
  std::string what;
  if (const std::error_code failed = terminal.Open(options->link, what)) {
    Tell(what + ": " + failed.message());
    return 1;
  }
  Serve(*options, terminal, attendant);
  return 0;
}
