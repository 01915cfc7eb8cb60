// Plays the whole program, from the page with the port to the last power cycle, while things go wrong, with
// an owner who follows the program's advice. docs/reliability.md tells what is played and what came out.
#include <cstdio>
#include <iostream>
#include <iterator>
#include <set>

#include "Visit.h"
#include "platform/program.h"
#include "support/TempFolder.h"

namespace tarnwick::campaign {
namespace {

using Number = std::uint32_t;

std::map<std::string, std::string> gOptions = {{"--seed", "1"}, {"--draws", "10000"}, {"--every", "1"}};

Number OptionNumber(const std::string& name) {
  return static_cast<Number>(std::stoul(gOptions[name]));
}

/// The values of which each pair is played, by their names.
constexpr std::array kModels = {"1 with 3.00", "1", "5", "6", "14"};
constexpr std::array kRevisions = {"1", "2", "3", "4", "5", "6"};
constexpr std::array kLoaders = {"old boot loader", "new boot loader", "old and new"};
constexpr std::array kLinks = {"direct", "hand control"};
constexpr std::array kDevices = {"one device", "two devices"};
constexpr std::array kLists = {"no HWREV", "one HWREV", "several HWREV", "several, turned round"};
constexpr std::array kOverrides = {"no override", "ModelOverride", "TypeOverride", "both overrides"};
constexpr std::array kBlocks = {"blocks as they are", "blocks of 1", "blocks of 2", "blocks of 4"};
constexpr std::array kFaults = {"no fault",     "cut",      "pull",  "port lost", "cancel",   "kill",
                                "deleted",      "replaced", "state", "model",     "revision", "boot-revision",
                                "boot-version", "read",     "enter", "start",     "send",     "end"};
constexpr std::array kAgain = {"recovered in peace", "recovery cut"};
constexpr std::size_t kDimensions = 10;
constexpr std::array<std::size_t, kDimensions> kSizes = {
    std::size(kModels), std::size(kRevisions), std::size(kLoaders), std::size(kLinks),  std::size(kDevices),
    std::size(kLists),  std::size(kOverrides), std::size(kBlocks),  std::size(kFaults), std::size(kAgain)};
enum Dimension : std::size_t {
  Model,
  Revision,
  Loader,
  Link,
  Devices,
  List,
  Overrides,
  Blocks,
  Faults,
  Again
};
constexpr std::size_t kFirstCall = 8;  ///< From there on in `kFaults`, a call of that name fails.

using Draw = std::array<std::size_t, kDimensions>;

const char* NameOf(std::size_t dimension, std::size_t value) {
  const std::array<const char* const*, kDimensions> names = {
      kModels.data(), kRevisions.data(), kLoaders.data(), kLinks.data(),  kDevices.data(),
      kLists.data(),  kOverrides.data(), kBlocks.data(),  kFaults.data(), kAgain.data()};
  return names[dimension][value];
}

std::string ListOf(const Draw& draw, int revision) {
  const bool new5 = revision >= 5;
  if (draw[List] == 0) return "";
  if (draw[List] == 1) return std::to_string(revision);
  if (draw[List] == 2) return new5 ? "5,6" : "1,2,3,4";
  return new5 ? "6,5" : "4,3,2,1";
}

/// How many blocks one device takes, its boot package included.
Number BlocksOf(const Case& c) {
  const Number size =
      c.blockSize == 0 ? (c.handControl || c.revision != 0 ? 1 : 2) : static_cast<Number>(c.blockSize);
  const Number boot = c.revision == 2 ? 116 : c.revision >= 5 ? 1600 : 0;
  return (96 + (c.oldLoader[0] || c.oldLoader[1] ? boot : 0)) / size;
}

Case CaseOf(const Draw& draw, Number number) {
  mount::Dice dice;
  dice.Seed(OptionNumber("--seed") * 1'000'003U + number);
  Case c;
  constexpr std::array kNumbers = {1, 1, 5, 6, 14};
  c.model = kNumbers[draw[Model]];
  c.firstVersion3 = draw[Model] == 0;
  c.revision = static_cast<std::int32_t>(draw[Revision]) + 1;
  c.oldLoader = {draw[Loader] != 1, draw[Loader] == 0};
  c.handControl = draw[Link] == 1;
  c.devices = static_cast<int>(draw[Devices]) + 1;
  c.list = ListOf(draw, c.revision);
  c.modelOverride = draw[Overrides] % 2 == 1;
  c.typeOverride = draw[Overrides] >= 2;
  constexpr std::array kBlockSizes = {0, 1, 2, 4};
  c.blockSize = kBlockSizes[draw[Blocks]];
  if (c.revision >= 5 && dice.Below(2) == 1) c.claims = 5 + static_cast<std::int32_t>(dice.Below(2));
  const bool call = draw[Faults] >= kFirstCall;
  c.fault = call ? Fault::FailedCall : static_cast<Fault>(draw[Faults]);
  if (call) c.call = kFaults[draw[Faults]];
  const Number blocks = BlocksOf(c) * static_cast<Number>(c.devices);
  // Of most kinds a run makes a few calls only.
  const bool few = c.call == "read" || c.call == "enter" || c.call == "start" || c.call == "end";
  const Number calls = c.call == "send" ? blocks : few ? 2 : 6;
  c.count = 1 + dice.Below(call ? calls : c.fault == Fault::Cancel ? blocks + 40 : blocks);
  c.byte = 1 + dice.Below(16);
  c.between = c.byte > 8;
  c.again = draw[Again] == 1;
  c.againAt = 1 + dice.Below(blocks * 14);
  return c;
}

struct Totals {
  Number played = 0, refused = 0, done = 0, struck = 0, bad = 0, visits = 0;
};

void Note(Totals& totals, const Result& result) {
  ++totals.played;
  totals.refused += result.end == End::Refused ? 1 : 0;
  totals.done += result.end == End::Done ? 1 : 0;
  totals.bad += result.end == End::Bad || !result.wrong.empty() ? 1 : 0;
  totals.struck += result.struck ? 1 : 0;
  totals.visits += static_cast<Number>(result.visits);
}

bool Tell(const std::string& name, const Totals& totals) {
  std::printf("%-14s %6u played: %5u refused, %5u began, %5u ended well, %u bad; %5u struck, %6u runs\n",
              name.c_str(), totals.played, totals.refused, totals.played - totals.refused, totals.done,
              totals.bad, totals.struck, totals.visits);
  return std::fflush(stdout) == 0 && totals.bad == 0;
}

std::string NameOf(const Draw& draw) {
  std::string name;
  for (const std::size_t value : draw) name += (name.empty() ? "" : ",") + std::to_string(value);
  return name;
}

class Campaign {
 public:
  Result Play(const Draw& draw, Number number) {
    Case played = CaseOf(draw, number);
    played.tell = gOptions.contains("--draw");
    Visit visit(played);
    const Result result = visit.Play();
    if (result.end == End::Bad || !result.wrong.empty()) {
      std::cout << result.wrong << "; repeat: program-campaign --seed " << gOptions["--seed"] << " --draw "
                << NameOf(draw) << " --number " << number << "  #";
      for (std::size_t i = 0; i < kDimensions; ++i) std::cout << " " << NameOf(i, draw[i]) << ";";
      std::cout << std::endl;
    }
    const bool met = result.struck || draw[Faults] == 0;
    if (result.end == End::Refused || !met) return result;
    for (std::size_t i = 0; i < kDimensions; ++i)
      for (std::size_t k = i + 1; k < kDimensions; ++k) ++mPairs[Pair(i, draw[i], k, draw[k])];
    return result;
  }

  /// Draws over all values.
  bool PlayDraws(Number draws) {
    Totals all;
    std::map<std::size_t, Totals> byFault;
    for (Number number = 0; number < draws; ++number) {
      const Draw draw = DrawOne();
      const Result result = Play(draw, number);
      Note(all, result);
      Note(byFault[draw[Faults]], result);
    }
    bool good = true;
    for (const auto& [fault, totals] : byFault) good = Tell(kFaults[fault], totals) && good;
    return Tell("all", all) && good;
  }

  /// Plays each pair of values that has begun less than `wanted` times until it has; one that did not begin
  /// once in so many tries is told as one that the rules do not let begin.
  bool PlayPairs(Number wanted) {
    constexpr Number kTries = 12;
    Totals all;
    std::set<std::string> never;
    Number pairs = 0, number = 1'000'000;
    for (std::size_t i = 0; i < kDimensions; ++i)
      for (std::size_t k = i + 1; k < kDimensions; ++k)
        for (std::size_t a = 0; a < kSizes[i]; ++a)
          for (std::size_t b = 0; b < kSizes[k]; ++b) {
            ++pairs;
            const Number& begun = mPairs[Pair(i, a, k, b)];
            for (Number tries = 0; begun < wanted && (begun > 0 || tries < kTries * wanted); ++tries) {
              Draw draw = DrawOne();
              draw[i] = a, draw[k] = b;
              Note(all, Play(draw, number++));
            }
            if (begun == 0) never.insert(std::string(NameOf(i, a)) + " with " + NameOf(k, b));
          }
    std::printf("%u pairs, %zu of which the rules let none begin:", pairs, never.size());
    for (const std::string& pair : never) std::printf(" %s;", pair.c_str());
    std::printf("\n");
    return Tell("pairs", all);
  }

  /// The power cut in block after block, of boot package and firmware, and the recovery cut once more.
  bool PlayBlocks(int revision) {
    Totals all;
    Draw draw{2, static_cast<std::size_t>(revision - 1), 0, 0, 0, 0, 0, 0, 1, 1};
    if (revision == 5) draw[Model] = 4, draw[List] = 2;
    const Number every = OptionNumber("--every");
    const Number blocks = BlocksOf(CaseOf(draw, 0));
    for (Number block = 1; block <= blocks; block += every) {
      Case c = CaseOf(draw, 2'000'000 + block);
      c.count = block;
      Visit visit(c);
      const Result result = visit.Play();
      if (!result.wrong.empty()) std::cout << result.wrong << " at block " << block << std::endl;
      Note(all, result);
    }
    return Tell("every block, " + std::to_string(revision), all) && all.struck == all.played;
  }

 private:
  static std::uint64_t Pair(std::size_t i, std::size_t a, std::size_t k, std::size_t b) {
    return ((i * 100 + a) * 100 + k) * 100 + b;
  }
  Draw DrawOne() {
    Draw draw{};
    for (std::size_t i = 0; i < kDimensions; ++i) draw[i] = mDice.Below(static_cast<Number>(kSizes[i]));
    return draw;
  }

  mount::Dice mDice = [] {
    mount::Dice dice;
    dice.Seed(OptionNumber("--seed"));
    return dice;
  }();
  std::map<std::uint64_t, Number> mPairs;
};

int PlayOne() {
  Draw draw{};
  std::string rest = gOptions["--draw"] + ",";
  for (std::size_t& value : draw) {
    value = std::stoul(rest);
    rest.erase(0, rest.find(',') + 1);
  }
  const Result result = Campaign().Play(draw, OptionNumber("--number"));
  constexpr std::array kEnds = {"refused", "done", "bad"};
  std::cout << kEnds[static_cast<std::size_t>(result.end)] << " " << result.wrong << ", " << result.visits
            << " runs" << std::endl;
  return result.end == End::Bad || !result.wrong.empty() ? 1 : 0;
}

}  // namespace
}  // namespace tarnwick::campaign

int main(int argc, char** argv) {
  using namespace tarnwick;
  using namespace tarnwick::campaign;
  for (int i = 1; i + 1 < argc; i += 2) gOptions[argv[i]] = argv[i + 1];
  if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 0);
  const test::TempFolder folder;
  std::filesystem::create_directory(folder / "MotorControllers");
  program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
  if (gOptions.contains("--draw")) return PlayOne();
  std::cout << "program-campaign: seed " << gOptions["--seed"] << std::endl;
  Campaign campaign;
  bool good = campaign.PlayDraws(OptionNumber("--draws"));
  if (gOptions.contains("--pairs")) good = campaign.PlayPairs(OptionNumber("--pairs")) && good;
  for (const int revision : {2, 5}) good = campaign.PlayBlocks(revision) && good;
  return good ? 0 : 1;
}
