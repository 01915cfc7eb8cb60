// Programs a sample image again and again while things go wrong, and lets the mount's memory judge.
// docs/reliability.md tells what is played, what came out and how one run is repeated.
#include <iostream>

#include "Run.h"

namespace tarnwick::campaign {
namespace {

/// In or around block after block: power cut at the first byte, within the request, at its last byte, with
/// a torn word, before the answer, within it. The recovery is cut once as well.
bool PlayCut(Run& run) {
  std::size_t block = run.number / 6;
  for (std::size_t kind = 0; run.size = kSizes[kind], block >= run.Blocks(); ++kind) block -= run.Blocks();
  const auto request = static_cast<Number>((block == 0 ? 7 : 5) + 2 * run.size);
  const Number answer = block == 0 ? 5 : 3;
  const std::array<Number, 6> bytes = {1,           2 + run.dice.Below(request - 2),         request, request,
                                       request + 1, request + 2 + run.dice.Below(answer - 1)};
  const Number point = run.number % 6;
  const bool done = run.Open() && run.Program([&](std::size_t reached) {
    if (reached == block) run.Play("fault cut " + to_string(bytes[point]) + (point == 3 ? " torn" : ""));
  });
  run.Play("power");
  run.Play("fault cut " +
           to_string(1 + run.dice.Below(static_cast<Number>(run.Blocks()) * (request + answer))));
  run.Program();
  run.Play("power");
  return done;
}

/// Cable pulled at every byte of an exchange of 10, 12 and 16 bytes, then at random bytes of the whole: half
/// are silence, in half the adapter goes and comes back under another name. Nobody opens the port again.
bool PlayCable(Run& run) {
  const Number n = run.number;
  const bool random = n >= 38;
  if (!random) run.size = kSizes[n < 10 ? 0 : n < 22 ? 1 : 2];
  const auto all = static_cast<Number>(run.Blocks() * (8 + 2 * run.size)) + 100;
  const Number byte = random ? run.dice.Below(all) : n < 10 ? n : n < 22 ? n - 10 : n - 22;
  const std::string pull = (n / 2 % 2 == 0 ? "fault vanish " : "fault pull ") + to_string(1 + byte);
  bool done = run.Open();
  if (random) run.Play(pull);
  done = done && run.Program([&](std::size_t block) {
    if (!random && block == run.Blocks() / 2) run.Play(pull);
  });
  run.Play("fault none");
  run.Play("plug");
  return done;
}

/// A byte comes up by itself as often as told, from before the opening on; the mount was left at its fastest
/// speed in half of the runs.
void Strays(Run& run, Number least, Number most, const std::vector<const char*>& speeds) {
  run.Play("baud " + std::string(speeds[run.dice.Below(static_cast<Number>(speeds.size()))]));
  run.Play("line paced=on");
  if (run.dice.Below(2) == 1) run.Open(), run.rig.Restart();
  const Number drawn = least + run.dice.Below(most - least + 1);
  const bool even = run.dice.Below(2) == 1;
  run.Play("fault stray " + to_string(even ? drawn : least) + " " + to_string(even ? drawn : most));
}

/// What takes a device long is waited for as long as the mount says, with the line a little worse than good.
void Busy(Run& run) {
  const Number most =
      gTerminal ? 4'001 : 10'001;  // There waiting takes real time; untold it is too long as well.
  const Number start = run.dice.Below(most), end = run.dice.Below(most), check = run.dice.Below(most);
  run.Play("busy start=" + to_string(start) + ",end=" + to_string(end) + ",check=" + to_string(check) +
           ",deaf=" + (run.dice.Below(2) == 1 ? "on" : "off"));
  run.Play("fault drop 0.0005");
  if (run.dice.Below(2) == 1) run.Play("fault refuse times 3 3");  // The mount cannot say so at first.
  run.slowest = std::chrono::milliseconds(std::max(start, end + check) + 3200);
}

/// A driver that takes some speeds as they are told, none of the others, or another one in their place. What
/// is only refused costs nothing: the fastest of the others is taken.
bool PlayDriver(Run& run) {
  run.Play("baud 921600");
  const auto any = static_cast<Number>(wire::kSpeeds.size());
  const bool rounds = run.dice.Below(2) == 1;
  if (rounds) run.Play("line rounds-to=" + to_string(wire::kSpeeds[1 + run.dice.Below(any - 1)]));
  int fastest = wire::kBaseSpeed;
  for (const int speed : wire::kSpeeds) {
    if (speed != wire::kBaseSpeed && run.dice.Below(2) == 1) {
      run.rig.line.refused.insert(speed);
    } else {
      fastest = std::max(fastest, speed);
    }
  }
  if (!run.Open()) return false;
  if (!rounds && run.rig.Core().Speed() != fastest) run.wrong = "not at the fastest speed";
  return run.Program();
}

using Play = std::function<bool(Run&)>;

/// What `begin` plays is played from before the opening on.
Play From(std::function<void(Run&)> begin) {
  return [begin](Run& run) {
    begin(run);
    const bool done = run.Open() && run.Program();
    if (!done) run.Play("power");
    return done;
  };
}
Play From(const std::string& command) {
  return From([command](Run& run) { run.Play(command); });
}

/// The image is read word by word while `faults` are played from before the opening on.
Play Reading(const std::vector<std::string>& faults) {
  return [faults](Run& run) {
    run.Place();
    for (const std::string& fault : faults) run.Play(fault);
    return run.Open() && run.Read();
  };
}

struct Campaign {
  std::string name;
  Number runs;
  double complete;  ///< Share of the runs that must succeed at once; the others must recover.
  Play play;
};

std::vector<Campaign> Campaigns() {
  constexpr std::array kRates = {" 0.001", " 0.01", " 0.1", " 0.5", " 1"};
  constexpr std::array kCommands = {"identify",      "lock",     "speed", "state",
                                    "boot-revision", "revision", "enter", "start",
                                    "write",         "check",    "end"};
  const std::vector<const char*> fast = {"19200", "57600", "115200", "921600"};
  std::vector<Campaign> all = {{"cut", 525 * 6, 0, PlayCut}, {"cable", 50 + 10'000, 0, PlayCable}};
  for (const auto& [rate, complete] : {std::pair{" 0.0001", 1.0}, {" 0.001", 0.999}, {" 0.01", 0.0}})
    for (const std::string kind : {"flip", "drop", "insert", "double"}) {
      all.push_back({kind + rate, 2000, complete, From("fault " + kind + rate)});
      all.push_back({"read " + kind + rate, 340, 0, Reading({"fault " + kind + rate})});
    }
  for (const std::string name : {"latency=1", "latency=16", "latency=50", "latency=100", "piece=1", "hold=16",
                                 "hold=50", "hand-control=60", "hand-control=120"})
    all.push_back({name, 1000, 1, From("line " + name)});
  all.push_back({"stray 50", 2000, 1, From([=](Run& run) { Strays(run, 50, 500, fast); })});
  all.push_back({"stray 5", 2000, 0, From([=](Run& run) { Strays(run, 5, 50, fast); })});
  all.push_back({"stray 9600", 2000, 0, From([](Run& run) { Strays(run, 50, 500, {"9600"}); })});
  all.push_back({"busy", 1000, 0.99, From(Busy)});
  if (!gTerminal) all.push_back({"driver", 1000, 1, PlayDriver});
  all.push_back({"first", 1000, 0.999, From([](Run& run) {
                   run.Play("first on");
                   run.Play("fault flip 0.001");
                 })});
  const auto lie = [&](const std::string& name, auto&& arguments) {
    all.push_back({name, 1000, 0, From([=](Run& run) { run.Play("fault " + name + arguments(run)); })});
  };
  const auto below = [](Run& run, Number count) { return " " + to_string(run.dice.Below(count)); };
  const auto rate = [=](Run& run) { return kRates[run.dice.Below(kRates.size())]; };
  lie("unstored", rate);
  lie("old", rate);
  lie("late", [=](Run& run) { return rate(run) + below(run, 2000); });
  lie("stuck", [=](Run& run) { return " 16" + below(run, 300) + below(run, 14) + below(run, 2); });
  lie("refuse", [=](Run& run) {
    const std::string command = kCommands[run.dice.Below(kCommands.size())];
    return " " + command + below(run, 9) + " " + to_string(1 + run.dice.Below(5));
  });
  all.push_back({"read stray 5", 340, 0, Reading({"line paced=on", "fault stray 5 50"})});
  all.push_back({"read stray 50", 340, 0, Reading({"line paced=on", "fault stray 50 500"})});
  all.push_back({"read old", 340, 0, Reading({"fault old 0.1"})});
  all.push_back({"read late", 340, 0, Reading({"fault late 0.1 400"})});
  return all;
}

/// Plays one campaign and tells its totals. False when it failed.
bool PlayAll(const Campaign& campaign) {
  const bool one = gOptions.contains("--run");
  const Number runs = one ? 1 : std::min(OptionNumber("--runs"), campaign.runs);
  Number completed = 0, bad = 0;
  wire::Duration longest{};
  mount::Dice draw;
  draw.Seed(OptionNumber("--seed"));
  for (Number i = 0; i < runs; ++i) {
    const Number drawn = runs == campaign.runs ? i : draw.Below(campaign.runs);
    Run run(one ? OptionNumber("--run") : drawn, OptionNumber("--seed"));
    const bool complete = campaign.play(run);
    run.Play("fault none");
    const bool open = complete || run.rig.Core().SerialMode() != 0 || run.Open();
    if (!complete && !(open && run.Program())) run.wrong = "no recovery";
    if (!complete && campaign.complete == 1) run.wrong = "not completed";
    completed += complete && run.wrong.empty() ? 1 : 0;
    bad += run.wrong.empty() ? 0 : 1;
    longest = std::max(longest, run.longest);
    if (!run.wrong.empty())
      std::cout << run.wrong << "; repeat: link-campaign --seed " << gOptions["--seed"] << " --only '"
                << campaign.name << "' --run " << run.number << (gTerminal ? " --terminal" : "") << std::endl;
  }
  const bool good = bad == 0 && completed >= campaign.complete * runs;
  std::printf("%-14s %5u runs: %5u done at once, %5u recovered, %u bad; longest call %.2f s%s\n",
              campaign.name.c_str(), runs, completed, runs - completed - bad, bad,
              static_cast<double>(longest.count()) / 1e6, good ? "" : "  FAILED");
  return std::fflush(stdout) == 0 && good;
}

}  // namespace
}  // namespace tarnwick::campaign

int main(int argc, char** argv) {
  using namespace tarnwick::campaign;
  for (int i = 1; i + 1 < argc; i += 2) gOptions[argv[i]] = argv[i + 1];
  gTerminal = Rig::Relayed() || (argc % 2 == 0 && argv[argc - 1] == std::string("--terminal"));
  const std::string only = "," + gOptions["--only"] + ",";
  std::cout << "link-campaign: seed " << gOptions["--seed"] << ", " << gSample.words.size() << " words, "
            << (gTerminal ? "pseudo terminal" : "virtual time") << std::endl;
  bool good = gSample.words.size() >= 256;
  for (const Campaign& campaign : Campaigns())
    if (only == ",," || only.find("," + campaign.name + ",") != std::string::npos)
      good = PlayAll(campaign) && good;
  return good ? 0 : 1;
}
