// Programs a sample image again and again while things go wrong, and lets the mount's memory judge.
// docs/reliability.md tells what is played and what came out.
#include <array>
#include <cstdlib>
#include <iostream>
#include <set>

#include "Rig.h"
#include "firmware/QALclass.h"

namespace tarnwick::campaign {
namespace {

using mount::Dice;
using std::to_string;
using Hook = std::function<void(std::size_t block)>;

constexpr wire::Duration kLongestCall = std::chrono::seconds(5);
constexpr std::array<std::size_t, 3> kSizes = {1, 2, 4};

struct Sample {
  std::vector<std::int32_t> words;
  std::string dump;  ///< As the mount tells its memory when it holds the words.
};

Sample LoadSample() {
  QALclass package;
  package.LoadQALfile(TARNWICK_SAMPLE);
  Sample sample;
  for (std::int32_t w = 0; !package.ErrorsFound() && w <= package.DeviceWords(1); ++w) {
    sample.words.push_back(*package.DeviceHiByte(1, w) * 256 + *package.DeviceLoByte(1, w));
    char text[8];
    std::snprintf(text, sizeof text, "%04X%c", static_cast<unsigned>(sample.words.back()) & 0xFFFFU,
                  w == package.DeviceWords(1) || w % 16 == 15 ? '\n' : ' ');
    sample.dump += text;
  }
  sample.dump += "end\n";
  return sample;
}

/// One run: a mount, a library and what happened to them.
class Run {
 public:
  Run(Rig& rig, const Sample& sample, std::uint32_t runNumber, std::uint32_t seed)
      : number(runNumber), mRig(rig), mSample(sample) {
    dice.Seed(seed);
    Play("fault seed " + to_string(dice.Below(1U << 30)));
    hangUp = dice.Below(2) == 1;
    if (dice.Below(2) == 1) Play("hand-control real");
  }

  const std::uint32_t number;
  Dice dice;
  std::size_t size = kSizes[number % kSizes.size()];  ///< Words in a block.
  bool hangUp;
  wire::Duration longest{};  ///< The longest call of the library.
  std::string wrong;         ///< What must never be, told.

  void Play(const std::string& command) {
    if (mRig.Ask(command) != "ok\n") wrong = "cannot play " + command;
  }
  std::size_t Blocks() const { return mSample.words.size() / size; }
  Rig& TheRig() { return mRig; }

  bool Open() {
    if (Call([&] { return mRig.Library().InitSerial("COM5"); }) != 0) return false;
    mRig.Library().LockHandControl();
    return true;
  }
  /// The whole run as the program makes it, without its boxes; false when a call failed. A success that
  /// the memory does not bear out is wrong.
  bool Program(const Hook& before = {}) {
    const bool done =
        Prepare() && WriteAll(before) && Call([&] { return mRig.Library().EndProgramming(16); }) != 0;
    const bool complete = mRig.Ask("state").find("complete=yes") != std::string::npos;
    if (done && !complete) wrong = "success, but the image is not complete";
    if (done && mRig.Ask("dump 16 " + to_string(mSample.words.size())) != mSample.dump)
      wrong = "a wrong word behind a success";
    return done;
  }

 private:
  template <class Action>
  std::int32_t Call(Action&& action) {
    const wire::Duration begin = mRig.Now();
    const std::int32_t result = action();
    longest = std::max(longest, mRig.Now() - begin);
    return result;
  }
  std::int32_t State() {
    std::int32_t out[2];
    return Call([&] { return mRig.Library().GetState(16, out, out + 1); });
  }
  bool Prepare() {
    wire::Library& library = mRig.Library();
    std::int32_t revision = 0;
    Call([&] { return library.LockHandControl(), 0; });
    const std::int32_t state = State();
    if (state == 0) return false;
    if (state == 1 && Call([&] { return library.GetRevision(16, &revision); }) == 0) return false;
    if (revision >= 4 && Call([&] { return library.EnterBoot(16); }) == 0) return false;
    if (Call([&] { return library.GetBootRevision(16, &revision); }) == 0) return false;
    if (State() == 2 && Call([&] { return library.StartProgramming(16); }) == 0) return false;
    return State() == 3;
  }
  bool WriteAll(const Hook& before) {
    for (std::size_t block = 0; block < Blocks(); ++block) {
      const std::size_t w = block * size;
      std::vector<std::int32_t> packet = {static_cast<std::int32_t>(w / 256),
                                          static_cast<std::int32_t>(w % 256)};
      for (std::size_t i = w; i < w + size; ++i)
        packet.insert(packet.end(), {mSample.words[i] & 0xFF, mSample.words[i] >> 8});
      if (before) before(block);
      const auto count = static_cast<std::int32_t>(packet.size());
      if (Call([&] { return mRig.Library().SendData(16, count, packet.data()); }) == 0) return false;
    }
    return true;
  }

  Rig& mRig;
  const Sample& mSample;
};

/// Power cut in or around block after block: at its first byte, within the request, at the request's last
/// byte, with a torn word, before the answer, within it. The recovery is cut once as well.
bool PlayCut(Run& run) {
  constexpr std::uint32_t kPoints = 6;
  std::size_t block = run.number / kPoints;
  std::size_t kind = 0;
  const std::size_t all = run.Blocks() * run.size;
  while (block >= all / kSizes[kind]) block -= all / kSizes[kind++];
  run.size = kSizes[kind];
  const auto request = static_cast<std::uint32_t>(7 + 2 * run.size);
  const std::uint32_t at[kPoints] = {1,           2 + run.dice.Below(request - 2), request, request,
                                     request + 1, request + 2 + run.dice.Below(4)};
  const std::uint32_t point = run.number % kPoints;
  if (!run.Open()) return false;
  const bool done = run.Program([&](std::size_t reached) {
    if (reached == block) run.Play("fault cut " + to_string(at[point]) + (point == 3 ? " torn" : ""));
  });
  run.Play("power");
  run.Play("fault cut " +
           to_string(1 + run.dice.Below(static_cast<std::uint32_t>(all / run.size) * (request + 5))));
  run.Program();
  run.Play("power");
  return done;
}

/// Cable pulled at every byte of an exchange with each block size, then at random bytes.
bool PlayCable(Run& run) {
  constexpr std::array<std::uint32_t, 3> kBytes = {14, 16, 20};
  std::uint32_t byte = run.number;
  std::size_t kind = 0;
  while (kind < kSizes.size() && byte >= kBytes[kind]) byte -= kBytes[kind++];
  const bool random = kind == kSizes.size();
  if (!random) run.size = kSizes[kind];
  const auto all = static_cast<std::uint32_t>(run.Blocks() * (12 + 2 * run.size)) + 100;
  const std::size_t block = random ? 0 : run.Blocks() / 2;
  const std::string pull = "fault pull " + to_string(1 + (random ? run.dice.Below(all) : byte));
  if (run.hangUp) run.TheRig().HangUpWhenPulled();
  if (!run.Open()) return false;
  if (random) run.Play(pull);
  const bool done = run.Program([&](std::size_t reached) {
    if (!random && reached == block) run.Play(pull);
  });
  run.Play("plug");
  return done;
}

/// Something that is played from before the opening on.
std::function<bool(Run&)> From(std::function<std::string(Run&)> command) {
  return [command](Run& run) {
    run.Play(command(run));
    return run.Open() && run.Program();
  };
}

std::function<bool(Run&)> From(const std::string& command) {
  return From([command](Run&) { return command; });
}

std::string StuckBit(Run& run) {
  return "fault stuck 16 " + to_string(run.dice.Below(300)) + " " + to_string(run.dice.Below(14)) + " " +
         to_string(run.dice.Below(2));
}

std::string Refusal(Run& run) {
  constexpr std::array kCommands = {"identify", "lock", "speed", "state", "boot-revision", "enter",
                                    "start",    "end",  "check", "write", "revision"};
  return std::string("fault refuse ") + kCommands[run.dice.Below(kCommands.size())] + " " +
         to_string(1 + run.dice.Below(8)) + " " + to_string(1 + run.dice.Below(5));
}

std::string Rate(Run& run) {
  constexpr std::array kRates = {" 0.001", " 0.01", " 0.1", " 0.5", " 1"};
  return kRates[run.dice.Below(kRates.size())];
}

struct Campaign {
  std::string name;
  std::uint32_t runs;
  double complete;  ///< Share of the runs that must succeed at once; the others must recover.
  std::function<bool(Run&)> play;
};

std::vector<Campaign> Campaigns() {
  std::vector<Campaign> all = {{"cut", 525 * 6, 0, PlayCut}, {"cable", 50 + 10'000, 0, PlayCable}};
  for (const auto& [rate, complete] : {std::pair{"0.0001", 1.0}, {"0.001", 0.999}, {"0.01", 0.0}})
    for (const std::string kind : {"flip", "drop", "insert", "double"})
      all.push_back({kind + "-" + rate, 2000, complete, From("fault " + kind + " " + rate)});
  for (const std::string line : {"latency=1", "latency=16", "latency=50", "latency=100", "piece=1"})
    all.push_back({line, 1000, 1, From("line " + line)});
  for (const std::string lie : {"unstored", "old"})
    all.push_back({lie, 1000, 0, From([lie](Run& run) { return "fault " + lie + Rate(run); })});
  all.push_back({"late", 1000, 0, From([](Run& run) {
                   return "fault late" + Rate(run) + " " + to_string(50 + run.dice.Below(1950));
                 })});
  all.push_back({"stuck", 1000, 0, From(StuckBit)});
  all.push_back({"refuse", 1000, 0, From(Refusal)});
  return all;
}

struct Options {
  std::uint32_t seed = 1;
  std::uint32_t runs = UINT32_MAX;  ///< At most so many of each campaign, drawn by the seed.
  std::set<std::string> only;       ///< These campaigns; all when empty.
  std::optional<std::uint32_t> run;
  bool terminal = false;
};

/// What is wrong with one run; empty when nothing is.
std::string PlayOne(const Campaign& campaign, const Sample& sample, const Options& options,
                    std::uint32_t number, bool& complete, wire::Duration& longest) {
  const std::uint32_t seed = options.seed * 1'000'003U + number;
  const int revision = number % 2 == 0 ? 2 : 5;
  std::unique_ptr<Rig> rig;
  if (options.terminal)
    rig = std::make_unique<TerminalRig>(TARNWICK_MOUNT, revision);
  else
    rig = std::make_unique<VirtualRig>(revision);
  Run run(*rig, sample, number, seed);
  complete = campaign.play(run);
  run.Play("fault none");
  if (!complete) rig->Rest(std::chrono::seconds(campaign.name == "late" ? 2 : 0));
  const bool opened = rig->Library().SerialMode() != 0 && !(run.hangUp && campaign.name == "cable");
  if (!complete && !((opened || run.Open()) && run.Program())) run.wrong = "no recovery";
  if (run.longest > kLongestCall) run.wrong = "a call took more than 5 seconds";
  longest = std::max(longest, run.longest);
  return run.wrong;
}

/// Plays one campaign and tells its totals. False when it failed.
bool PlayAll(const Campaign& campaign, const Sample& sample, const Options& options) {
  const bool all = options.runs >= campaign.runs;
  const std::uint32_t runs = options.run ? 1 : std::min(options.runs, campaign.runs);
  std::uint32_t completed = 0;
  std::uint32_t bad = 0;
  wire::Duration longest{};
  Dice draw;
  draw.Seed(options.seed);
  for (std::uint32_t i = 0; i < runs; ++i) {
    const std::uint32_t n = options.run.value_or(all ? i : draw.Below(campaign.runs));
    bool complete = false;
    const std::string wrong = PlayOne(campaign, sample, options, n, complete, longest);
    completed += complete ? 1 : 0;
    bad += wrong.empty() ? 0 : 1;
    if (!wrong.empty() || (!complete && campaign.complete == 1.0))
      std::cout << campaign.name << " run " << n << ": " << (wrong.empty() ? "not completed" : wrong)
                << "; repeat: link-campaign" << (options.terminal ? " --terminal" : "") << " --seed "
                << options.seed << " --only " << campaign.name << " --run " << n << "\n";
  }
  const bool enough = completed >= campaign.complete * runs;
  std::printf("%-14s %6u runs %6u at once %6u recovered %4u bad  longest call %5.2f s  %s\n",
              campaign.name.c_str(), runs, completed, runs - completed - std::min(bad, runs - completed), bad,
              static_cast<double>(longest.count()) / 1e6, bad == 0 && enough ? "ok" : "FAILED");
  std::fflush(stdout);
  return bad == 0 && enough;
}

int Main(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    const std::string value = i + 1 < arguments.size() ? arguments[i + 1] : "";
    const auto number = static_cast<std::uint32_t>(std::strtoul(value.c_str(), nullptr, 10));
    if (name == "--terminal") options.terminal = true;
    if (name == "--seed") options.seed = number;
    if (name == "--runs") options.runs = number;
    if (name == "--only") options.only.insert(value);
    if (name == "--run") options.run = number;
  }
  const Sample sample = LoadSample();
  if (sample.words.size() < 256) return std::cerr << "no sample image\n", 2;
  std::cout << "link-campaign: seed " << options.seed << ", "
            << (options.terminal ? "pseudo terminal" : "virtual time") << "\n";
  bool good = true;
  for (const Campaign& campaign : Campaigns())
    if (options.only.empty() || options.only.contains(campaign.name))
      good = PlayAll(campaign, sample, options) && good;
  return good ? 0 : 1;
}

}  // namespace
}  // namespace tarnwick::campaign

int main(int argc, char** argv) {
  return tarnwick::campaign::Main({argv + 1, argv + argc});
}
