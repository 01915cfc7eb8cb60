// Plays the whole program, from the page with the port to the last power cycle, while things go wrong, with
// an owner who follows the program's advice. docs/reliability.md tells what is played and what came out.
#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <set>

#include "Killed.h"
#include "Owner.h"
#include "support/TempFolder.h"

namespace tarnwick::campaign {
namespace {

std::map<std::string, std::string> gOptions = {{"--seed", "1"}, {"--draws", "10000"}, {"--every", "1"}};

Number OptionNumber(const std::string& name) {
  return static_cast<Number>(std::stoul(gOptions[name]));
}

enum class End {
  Refused,  ///< Before the first touch, memory unchanged.
  Done,     ///< The mount's memory equals the package, and the boot loader is right.
  Bad,
};

struct Result {
  End end = End::Bad;
  std::string wrong;
  bool struck = false;  ///< The fault came.
  int runs = 0;
};

struct Totals {
  Number played = 0, refused = 0, done = 0, struck = 0, bad = 0, runs = 0;
};

void Note(Totals& totals, const Result& result) {
  ++totals.played;
  totals.refused += result.end == End::Refused ? 1 : 0;
  totals.done += result.end == End::Done ? 1 : 0;
  totals.bad += result.end == End::Bad || !result.wrong.empty() ? 1 : 0;
  totals.struck += result.struck ? 1 : 0;
  totals.runs += static_cast<Number>(result.runs);
}

bool Tell(const std::string& name, const Totals& totals) {
  std::printf("%-14s %6u played: %5u refused, %5u began, %5u ended well, %u bad; %5u struck, %6u runs\n",
              name.c_str(), totals.played, totals.refused, totals.played - totals.refused, totals.done,
              totals.bad, totals.struck, totals.runs);
  return std::fflush(stdout) == 0 && totals.bad == 0;
}

std::string NameOf(const Draw& draw) {
  std::string name;
  for (const std::size_t value : draw) name += (name.empty() ? "" : ",") + std::to_string(value);
  return name;
}

/// What starts the same case again.
std::vector<std::string> ArgumentsOf(const Draw& draw, Number number) {
  return {"--seed", gOptions["--seed"], "--draw", NameOf(draw), "--number", std::to_string(number)};
}

Case TheCase(const Draw& draw, Number number) {
  Case played = CaseOf(draw, OptionNumber("--seed"), number);
  played.tell = gOptions.contains("--tell");
  return played;
}

Result PlayCase(const Case& played, const std::vector<std::string>& arguments) {
  const test::TempFolder folder;
  World world(played, folder.Path());
  Report report;
  if (played.fault == Fault::Kill) {
    std::vector<std::string> player{"program-campaign", "--folder", folder.Path().string()};
    player.insert(player.end(), arguments.begin(), arguments.end());
    if (played.tell) player.insert(player.end(), {"--tell", "1"});
    report = PlayKilled(played, world, player);
  } else {
    report = PlayFace(played, world, folder.Path());
  }
  Result result{.wrong = report.wrong, .struck = world.Struck() || report.cancelled, .runs = report.runs};
  const bool untouched = !report.gaveUp.empty() && world.Untouched();
  if (!report.gaveUp.empty() && !untouched) result.wrong += "lost: " + report.gaveUp;
  if (report.gaveUp.empty() && result.wrong.empty()) result.wrong = world.Judge(report);
  if (result.wrong.empty()) result.end = untouched ? End::Refused : End::Done;
  return result;
}

class Campaign {
 public:
  Result Play(const Draw& draw, Number number) {
    const std::vector<std::string> arguments = ArgumentsOf(draw, number);
    const Result result = PlayCase(TheCase(draw, number), arguments);
    if (result.end == End::Bad) {
      std::cout << result.wrong << "; repeat: program-campaign";
      for (const std::string& each : arguments) std::cout << " " << each;
      std::cout << "  #";
      for (std::size_t i = 0; i < kDimensions; ++i) std::cout << " " << NamesOf(i)[draw[i]] << ";";
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
    for (const auto& [fault, totals] : byFault) good = Tell(NamesOf(Faults)[fault], totals) && good;
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
        for (std::size_t a = 0; a < NamesOf(i).size(); ++a)
          for (std::size_t b = 0; b < NamesOf(k).size(); ++b) {
            ++pairs;
            const Number& begun = mPairs[Pair(i, a, k, b)];
            for (Number tries = 0; begun < wanted && (begun > 0 || tries < kTries * wanted); ++tries) {
              Draw draw = DrawOne();
              draw[i] = a, draw[k] = b;
              Note(all, Play(draw, number++));
            }
            if (begun == 0) never.insert(std::string(NamesOf(i)[a]) + " with " + NamesOf(k)[b]);
          }
    std::printf("%u pairs, %zu of which the rules let none begin:", pairs, never.size());
    for (const std::string& pair : never) std::printf(" %s;", pair.c_str());
    std::printf("\n");
    return Tell("pairs", all);
  }

  /// The power cut in block after block, of boot package and firmware, and the recovery cut once more.
  bool PlayBlocks(int revision) {
    Totals all;
    Draw draw{};
    draw[Model] = 2, draw[Revision] = static_cast<std::size_t>(revision - 1), draw[Faults] = draw[Again] = 1;
    if (revision == 5) draw[Model] = 4, draw[List] = 2;
    const Number every = OptionNumber("--every");
    const Number blocks = BlocksOf(TheCase(draw, 0));
    for (Number block = 1; block <= blocks; block += every) {
      Case c = TheCase(draw, 2'000'000 + block);
      c.count = block;
      const Result result = PlayCase(c, {});
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
    for (std::size_t i = 0; i < kDimensions; ++i)
      draw[i] = mDice.Below(static_cast<Number>(NamesOf(i).size()));
    return draw;
  }

  mount::Dice mDice = [] {
    mount::Dice dice;
    dice.Seed(OptionNumber("--seed"));
    return dice;
  }();
  std::map<std::uint64_t, Number> mPairs;
};

Draw DrawGiven() {
  Draw draw{};
  std::string rest = gOptions["--draw"] + ",";
  for (std::size_t& value : draw) {
    value = std::stoul(rest);
    rest.erase(0, rest.find(',') + 1);
  }
  return draw;
}

int PlayOne() {
  gOptions["--tell"] = "1";
  const Result result = Campaign().Play(DrawGiven(), OptionNumber("--number"));
  constexpr std::array kEnds = {"refused", "done", "bad"};
  std::cout << kEnds[static_cast<std::size_t>(result.end)] << " " << result.wrong << ", " << result.runs
            << " runs" << std::endl;
  return result.end == End::Bad ? 1 : 0;
}

int PlayAll() {
  std::cout << "program-campaign: seed " << gOptions["--seed"] << std::endl;
  Campaign campaign;
  bool good = campaign.PlayDraws(OptionNumber("--draws"));
  if (gOptions.contains("--pairs")) good = campaign.PlayPairs(OptionNumber("--pairs")) && good;
  for (const int revision : {2, 5}) good = campaign.PlayBlocks(revision) && good;
  return good ? 0 : 1;
}

}  // namespace
}  // namespace tarnwick::campaign

int main(int argc, char** argv) {
  using namespace tarnwick::campaign;
  for (int i = 1; i + 1 < argc; i += 2) gOptions[argv[i]] = argv[i + 1];
  if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 0);
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  ::setenv("QT_LOGGING_RULES", "default.warning=false", 0);  // Of what that platform does not support.
  QApplication application(argc, argv);
  if (gOptions.contains("--player"))
    return PlayAsPlayer(TheCase(DrawGiven(), OptionNumber("--number")), std::stoi(gOptions["--player"]),
                        gOptions["--folder"]);
  return gOptions.contains("--draw") ? PlayOne() : PlayAll();
}
