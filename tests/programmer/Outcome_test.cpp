// What the owner is told: the line for each motor, the note of a run that was cut off, and that the advice is
// the one of the help and the guide.
#include <regex>

#include "ProgrammerFixture.h"
#include "link/LastSeen.h"
#include "platform/program.h"
#include "programmer/Advice.h"
#include "programmer/RunOutcome.h"
#include "programmer/TimeLeft.h"
#include "programmer/UnfinishedRun.h"
#include "support/ClockDouble.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

class OutcomeTest : public ProgrammerFixture {
 protected:
  OutcomeTest() {
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    link.devices[16] = {.state = 1, .major = 5, .minor = 12, .model = 14, .hwRev = 5, .bootHwRev = 5};
    Load(14, "5", {{"Azm", 16, CountedWords(3)}});
    Refresh();
  }
  std::string Text(RowOutcome outcome, std::int32_t state, std::int32_t bootVersion = 2) {
    link.devices[16].state = state;
    link.devices[16].bootVersion = bootVersion;
    ForgetRevisions(1);
    Refresh();
    outcome.Row = 1;
    return OutcomeText(outcome);
  }
  TempFolder folder;
};

TEST_F(OutcomeTest, TellsHowFarItGotAndWhatToDo) {
  using std::string;
  const string name = "AZM(RA) Motor", seen = name + " (last seen: CORVANEM, HwRev 5)";
  const RowOutcome written{.End = RowEnd::Written, .Version = 5.12};
  EXPECT_EQ(Text(written, 1), name + ": 5.12 written, running");
  EXPECT_EQ(Text(written, 2), name + ": 5.12 written. " + string(advice::kCyclePower));
  const RowOutcome stopped{.End = RowEnd::Stopped, .Percent = 78};
  EXPECT_EQ(Text(stopped, 3), seen + ": stopped at 78 %. " + string(advice::kBeginAgain));
  EXPECT_EQ(Text({.End = RowEnd::Stopped, .BootPackage = true, .Percent = 4}, 0),
            seen + ": stopped at 4 % of the boot loader. " + string(advice::kAskAgain));
  EXPECT_EQ(Text(stopped, 2, 1), seen + ": stopped at 78 %. " + string(advice::kNameRevision));
  EXPECT_EQ(Text({.End = RowEnd::Stopped, .PackageLost = true}, 2),
            seen + ": stopped at 0 %. " + string(advice::kChooseAgain));
  EXPECT_EQ(Text({.End = RowEnd::NotReached}, 1), name + ": not touched.");
  EXPECT_EQ(Text({.End = RowEnd::Refused}, 2, 1), seen + ": not changed.") << "The message told why.";
  EXPECT_EQ(Text({.End = RowEnd::NotBegun}, 1), name + ": not written. " + string(advice::kBeginAgain));
}

TEST_F(OutcomeTest, ANoteStandsUntilTheMotorIsWrittenOrTheOwnerSaysSo) {
  ShowUnfinished();
  EXPECT_THAT(user.Said(), IsEmpty());
  ClockDouble clock;
  clock.step = {};
  UnfinishedNote note(1);
  note.Keep({.Row = 1, .End = RowEnd::Stopped, .BootPackage = true, .Percent = 43});
  ForgetSeen();
  ShowUnfinished();
  const std::string shown =
      "YesNo !|The programming of a motor was begun and not ended:\r\n\r\n"
      "AZM(RA) Motor (last seen: CORVANEM, HwRev 5): stopped at 43 % of the boot loader for \r\n\r\n" +
      std::string(advice::kResume) + "\r\n\r\nKeep this note until it is programmed?";
  EXPECT_THAT(user.Said(), ElementsAre(shown));
  EXPECT_EQ(SeenText(LastSeen(16)), "CORVANEM, HwRev 5") << "So that it can be told in this visit too.";
  ForgetUnfinished(17);
  EXPECT_EQ(ReadUnfinished().size(), 1U);
  ForgetUnfinished(16);
  EXPECT_FALSE(std::filesystem::exists(UnfinishedPath()));
  note.Keep({.Row = 1, .Percent = 10});
  note.Keep({.Row = 1, .Percent = 90});
  EXPECT_EQ(ReadUnfinished().at(0).Percent, 10) << "Not more than once a second.";
  clock.steady += std::chrono::seconds(1);
  note.Keep({.Row = 1, .Percent = 91});
  EXPECT_EQ(ReadUnfinished().at(0).Percent, 91);
  user.answers = {ui::Answer::No};
  ShowUnfinished();
  EXPECT_FALSE(std::filesystem::exists(UnfinishedPath()));
  WriteFile(UnfinishedPath(), "[x]\r\nNAME= y\r\nno sense [16\r\n[16]\r\nPERCENT= 5");
  EXPECT_THAT(ReadUnfinished(), IsEmpty());
}

/// The text of a page without its marks, each run of blanks one blank.
std::string Plain(const std::string& page) {
  const std::string text = std::regex_replace(page, std::regex("<[^>]*>|\\*\\*"), "");
  return std::regex_replace(text, std::regex("\\s+"), " ");
}

TEST(RunsTime, IsToldFromWhatIsMeasured) {
  struct Case {
    std::int32_t number, count;
    double share;
    int spentSeconds;
    const char* told;
  };
  ClockDouble clock;
  clock.step = {};
  for (const Case& each : std::initializer_list<Case>{{1, 1, 0.5, 0, ""},
                                                      {1, 1, 0.01, 30, ""},
                                                      {1, 1, 0.5, 30, "about 30 s left"},
                                                      {1, 2, 0.5, 30, "Motor 1 of 2, about 90 s left"},
                                                      {2, 2, 0.5, 30, "Motor 2 of 2, about 30 s left"},
                                                      {1, 2, 0.25, 60, "Motor 1 of 2, about 7 min left"}}) {
    TimeLeft left;
    left.Begin(each.number, each.count);
    clock.steady += std::chrono::seconds(each.spentSeconds);
    left.Reached(each.share);
    EXPECT_EQ(left.Text(), each.told) << each.share;
    left.Reached(0);  // The image begins anew, and so does its time.
    clock.steady += std::chrono::seconds(2);
    left.Reached(0.5);
    EXPECT_THAT(left.Text(),
                testing::HasSubstr(each.number < each.count ? "about 6 s left" : "about 2 s left"));
  }
}

TEST(Advice, IsWhatTheHelpTellsForEachMessage) {
  std::string entries;
  for (const char* page : {"Step2.htm", "Step3.htm", "Step4.htm"})
    entries += ReadFile(std::filesystem::path(TARNWICK_SOURCE_DIR) / "help" / page);
  const std::regex entry("<dt>([^]*?)</dt>\\s*<dd>([^]*?)</dd>");
  for (const advice::MessageAdvice& each : advice::OfMessages()) {
    int told = 0;
    for (std::sregex_iterator at(entries.begin(), entries.end(), entry), end; at != end; ++at) {
      if (advice::OfMessage(Plain((*at)[1])) != each.advice ||
          Plain((*at)[1]).find(each.message) == std::string::npos)
        continue;
      ++told;
      EXPECT_NE(Plain((*at)[2]).find(each.advice), std::string::npos) << each.message;
    }
    EXPECT_GT(told, 0) << each.message;
  }
}

TEST(Advice, IsWhatTheUserGuideTells) {
  const std::string guide =
      Plain(ReadFile(std::filesystem::path(TARNWICK_SOURCE_DIR) / "docs/user-guide.md"));
  for (const std::string_view each : {advice::kBeginAgain, advice::kAskAgain, advice::kChooseAgain,
                                      advice::kNameRevision, advice::kResume, advice::kTryOnce})
    EXPECT_NE(guide.find(each), std::string::npos) << each;
}

}  // namespace
}  // namespace tarnwick::test
