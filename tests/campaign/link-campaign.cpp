// Programs a sample image again and again while things go wrong, and lets the mount's memory judge.
// docs/reliability.md tells what is played, what came out and how one run is repeated.
#include <array>
#include <iostream>

#include "firmware/QALclass.h"
#include "mount/Console.h"
#include "mount/MountProcess.h"
#include "support/TempFolder.h"
#include "support/VirtualLine.h"
#include "linklib/LinkCore.h"
#include "linklib/Surroundings.h"

namespace tarnwick::campaign {
namespace {

using std::to_string;
using wire::LinkCore;
using Number = std::uint32_t;

constexpr wire::Duration kLongestCall = std::chrono::seconds(5);
constexpr std::array<std::size_t, 3> kSizes = {1, 2, 4};
constexpr std::int32_t kDevice = 16;

bool gTerminal = false;
std::map<std::string, std::string> gOptions = {{"--seed", "1"}, {"--runs", "1000000"}};

Number OptionNumber(const std::string& name) {
  return static_cast<Number>(std::stoul(gOptions[name]));
}

const test::TempFolder gFolder;

/// A simulated mount with the link library's core before it, commanded and judged by the mount's own
/// commands: in this process on virtual time or, with --terminal, over a real pseudo terminal.
struct Rig {
  /// A pulled cable is silence or, with `hangsUp`, the loss of the port until the cable is plugged in.
  Rig(int revision, bool hangsUp)
      : faults(mount, line.line, [=, this](const auto& told) {
          line.hungUp = line.hungUp || (hangsUp && told.starts_with("cable pulled"));
        }) {
    mount.Put(kDevice, {.revision = revision});
    if (gTerminal) process.Start(TARNWICK_MOUNT, gFolder / "ports/COM5", {"--revision", to_string(revision)});
  }
  /// All lines that the mount answers to a command.
  std::string Ask(const std::string& command) {
    if (gTerminal) return process.Ask(command);
    line.hungUp = line.hungUp && command != "plug";
    return console.Execute(command);
  }

  mount::Mount mount;
  test::VirtualLine line{mount};
  mount::Faults faults;
  mount::Console console{mount, line.line, faults};
  mount::MountProcess process;
  wire::PortOpener terminal{gFolder.Path()};
  wire::SteadyClock steady;
  wire::IClock& clock = gTerminal ? static_cast<wire::IClock&>(steady) : line;
  wire::LinkCore core{gTerminal ? static_cast<wire::IPortOpener&>(terminal) : line, clock};
};

struct Sample {
  Sample() {
    QALclass package;
    package.LoadQALfile(TARNWICK_SAMPLE);
    Rig scratch(2, false);
    for (std::int32_t w = 0; w <= package.DeviceWords(1); ++w) {
      words.push_back(*package.DeviceHiByte(1, w) * 256 + *package.DeviceLoByte(1, w));
      scratch.Ask("poke 16 " + to_string(w) + " " + to_string(words.back()));
    }
    dump = scratch.Ask("dump 16 " + to_string(words.size()));
  }
  std::vector<std::int32_t> words;
  std::string dump;  ///< As the mount tells its memory when it holds the words.
};

const Sample gSample;

struct Run {
  Run(Number n, Number seed) : number(n) {
    dice.Seed(seed * 1'000'003U + n);
    Play("fault seed " + to_string(dice.Below(1U << 30)));
    if (dice.Below(2) == 1) Play("hand-control real");
  }
  void Play(const std::string& command) {
    if (rig.Ask(command) != "ok\n") wrong = "cannot play " + command;
  }
  template <class... Parameters, class... Arguments>
  std::int32_t Call(std::int32_t (LinkCore::*function)(Parameters...), Arguments... arguments) {
    const wire::Duration begin = rig.clock.Now();
    const std::int32_t result = (rig.core.*function)(arguments...);
    longest = std::max(longest, rig.clock.Now() - begin);
    return result;
  }
  std::size_t Blocks() const { return gSample.words.size() / size; }
  std::int32_t State() { return Call(&LinkCore::GetState, kDevice, &version, &version); }
  bool Open() { return Call(&LinkCore::InitSerial, "COM5") == 0; }

  /// The whole way as the program goes it, without its boxes; `before` is asked before each block. False
  /// when a call failed. A success that the memory does not bear out is wrong.
  bool Program(const std::function<void(std::size_t)>& before = {}) {
    rig.core.LockHandControl();
    const std::int32_t state = State();
    std::int32_t revision = 0;
    if (state == 0 || (state == 1 && Call(&LinkCore::GetRevision, kDevice, &revision) == 0)) return false;
    if (revision >= 4 && Call(&LinkCore::EnterBoot, kDevice) == 0) return false;
    if (Call(&LinkCore::GetBootRevision, kDevice, &revision) == 0) return false;
    if (State() == 2 && Call(&LinkCore::StartProgramming, kDevice) == 0) return false;
    if (State() != 3) return false;
    for (std::size_t block = 0; block < Blocks(); ++block) {
      const auto w = static_cast<std::int32_t>(block * size);
      std::vector<std::int32_t> packet = {w / 256, w % 256};
      for (std::size_t i = block * size; i < (block + 1) * size; ++i)
        packet.insert(packet.end(), {gSample.words[i] & 0xFF, gSample.words[i] >> 8});
      if (before) before(block);
      const auto count = static_cast<std::int32_t>(packet.size());
      if (Call(&LinkCore::SendData, kDevice, count, packet.data()) == 0) return false;
    }
    if (Call(&LinkCore::EndProgramming, kDevice) == 0) return false;
    if (rig.Ask("dump 16 " + to_string(gSample.words.size())) != gSample.dump) wrong = "a wrong word";
    if (rig.Ask("state").find("complete=yes") == std::string::npos) wrong = "an incomplete image";
    return true;
  }

  const Number number;
  const bool hangsUp = number / 2 % 2 == 0;  ///< A pulled cable takes the port away; else it is silence.
  Rig rig{(number + number / 6) % 2 == 0 ? 2 : 5, hangsUp};
  mount::Dice dice;
  std::size_t size = kSizes[number % kSizes.size()];  ///< Words in a block.
  wire::Duration longest{};                           ///< The longest call of the library.
  std::int32_t version = 0;
  std::string wrong;  ///< What must never be, told.
};

/// In or around block after block: power cut at the first byte, within the request, at its last byte, with
/// a torn word, before the answer, within it. The recovery is cut once as well.
bool PlayCut(Run& run) {
  std::size_t block = run.number / 6;
  for (std::size_t kind = 0; run.size = kSizes[kind], block >= run.Blocks(); ++kind) block -= run.Blocks();
  const auto request = static_cast<Number>(7 + 2 * run.size);
  const std::array<Number, 6> bytes = {1,           2 + run.dice.Below(request - 2), request, request,
                                       request + 1, request + 2 + run.dice.Below(4)};
  const Number point = run.number % 6;
  const bool done = run.Open() && run.Program([&](std::size_t reached) {
    if (reached == block) run.Play("fault cut " + to_string(bytes[point]) + (point == 3 ? " torn" : ""));
  });
  run.Play("power");
  run.Play("fault cut " + to_string(1 + run.dice.Below(static_cast<Number>(run.Blocks()) * (request + 5))));
  run.Program();
  run.Play("power");
  return done;
}

/// Cable pulled at every byte of an exchange of 14, 16 and 20 bytes, then at random bytes of the whole.
bool PlayCable(Run& run) {
  const Number n = run.number;
  const bool random = n >= 50;
  if (!random) run.size = kSizes[n < 14 ? 0 : n < 30 ? 1 : 2];
  const auto all = static_cast<Number>(run.Blocks() * (12 + 2 * run.size)) + 100;
  const Number byte = random ? run.dice.Below(all) : n < 14 ? n : n < 30 ? n - 14 : n - 30;
  const std::string pull = "fault pull " + to_string(1 + byte);
  bool done = run.Open();
  if (random) run.Play(pull);
  done = done && run.Program([&](std::size_t block) {
    if (!random && block == run.Blocks() / 2) run.Play(pull);
  });
  run.Play("fault none");
  run.Play("plug");
  return (!run.hangsUp || run.Open()) && done;
}

using Play = std::function<bool(Run&)>;

/// What `command` gives is played from before the opening on.
Play From(std::function<std::string(Run&)> command) {
  return [command](Run& run) {
    run.Play(command(run));
    const bool done = run.Open() && run.Program();
    if (!done) run.Play("power");
    return done;
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
  const auto below = [](Run& run, Number count) { return " " + to_string(run.dice.Below(count)); };
  std::vector<Campaign> all = {{"cut", 525 * 6, 0, PlayCut}, {"cable", 50 + 10'000, 0, PlayCable}};
  for (const auto& [rate, complete] : {std::pair{" 0.0001", 1.0}, {" 0.001", 0.999}, {" 0.01", 0.0}})
    for (const char* kind : {"flip", "drop", "insert", "double"}) {
      const std::string name = std::string(kind) + rate;
      all.push_back({name, 2000, complete, From([name](Run&) { return "fault " + name; })});
    }
  for (const std::string name : {"latency=1", "latency=16", "latency=50", "latency=100", "piece=1"})
    all.push_back({name, 1000, 1, From([name](Run&) { return "line " + name; })});
  const auto lie = [&](const std::string& name, auto&& arguments) {
    all.push_back({name, 1000, 0, From([=](Run& run) { return "fault " + name + arguments(run); })});
  };
  const auto rate = [=](Run& run) { return kRates[run.dice.Below(kRates.size())]; };
  lie("unstored", rate);
  lie("old", rate);
  lie("late", [=](Run& run) { return rate(run) + below(run, 2000); });
  lie("stuck", [=](Run& run) { return " 16" + below(run, 300) + below(run, 14) + below(run, 2); });
  lie("refuse", [=](Run& run) {
    const std::string command = kCommands[run.dice.Below(kCommands.size())];
    return " " + command + below(run, 9) + " " + to_string(1 + run.dice.Below(5));
  });
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
    const bool open = complete || run.rig.core.SerialMode() != 0 || run.Open();
    if (!complete && !(open && run.Program())) run.wrong = "no recovery";
    if (!complete && campaign.complete == 1) run.wrong = "not completed";
    if (run.longest > kLongestCall) run.wrong = "a call of more than 5 seconds";
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
  gTerminal = argc % 2 == 0 && argv[argc - 1] == std::string("--terminal");
  const std::string only = "," + gOptions["--only"] + ",";
  std::cout << "link-campaign: seed " << gOptions["--seed"] << ", " << gSample.words.size() << " words, "
            << (gTerminal ? "pseudo terminal" : "virtual time") << std::endl;
  bool good = gSample.words.size() >= 256;
  for (const Campaign& campaign : Campaigns())
    if (only == ",," || only.find("," + campaign.name + ",") != std::string::npos)
      good = PlayAll(campaign) && good;
  return good ? 0 : 1;
}
