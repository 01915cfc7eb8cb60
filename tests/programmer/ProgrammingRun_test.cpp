// What of a run neither the random runs of the second reading nor the campaign of the whole program play;
// they hold its order, its stops and its outcomes.
#include "programmer/ProgrammingRun.h"

#include "ProgrammerFixture.h"
#include "platform/program.h"
#include "programmer/ProgramDevice.h"
#include "programmer/UnfinishedRun.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

const std::vector<PackageDevice> kBoth{{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}};
class ProgrammingRunTest : public ProgrammerFixture {
 protected:
  ProgrammingRunTest() {
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    for (const std::int32_t address : {16, 17})
      link.devices[address] = {.state = 1, .major = 4, .model = 5, .hwRev = 5, .bootHwRev = 5};
    Choose(PackageText(5, "5", kBoth));
  }
  /// The package as the page before the last one takes it on.
  void Choose(const std::string& package) {
    WriteFile(path, package);
    gQAL->LoadQALfile(path);
    MatchPackageDevices();
    judged = gQAL->Identity();
    Refresh();
  }
  void Run(std::vector<std::int32_t> rows = {1, 2}) {
    const bool together = rows.size() != 1;
    gCancelProgram = true;  // Of an earlier run, and nothing to this one.
    ProgrammingRun(std::move(rows), together, judged).Execute(progress);
    EXPECT_FALSE(gProgramming);
  }
  /// Nothing is begun, and the user reads `text`.
  void ExpectRefused(const std::string& text, std::vector<std::int32_t> rows = {1, 2}) {
    SCOPED_TRACE(text);
    Run(std::move(rows));
    EXPECT_THAT(link.calls, testing::Not(testing::Contains(testing::StartsWith("enter"))));
    EXPECT_THAT(user.Said(), ElementsAre("Ok !|" + text));
  }

  TempFolder folder;
  std::filesystem::path path = folder / "chosen.qal";
  QalIdentity judged;
};

TEST_F(ProgrammingRunTest, RefusesAPackageThatIsNotTheOneThatWasJudged) {
  gModelOverride = true;
  ExpectRefused("No matching devices found in firmware file", {});
  gDevices[2].QalIndex = 0;
  ExpectRefused("No matching devices found in firmware file", {2});
  gQAL->LoadQALfile(path, PackageText(5, "5", {kBoth[1], kBoth[0]}));
  ExpectRefused("The package is no longer the one that was chosen");
  gQAL->LoadQALfile(folder / "none.qal");
  ExpectRefused("Error 1 : QAL File Not Found at Line 0");
  Choose(PackageText(5, "5", {{"Azm", 16, {}}}));
  ExpectRefused("Error 7 : No Data Found For Device at Line 13", {1});
}

TEST_F(ProgrammingRunTest, HasTheMotorsNameWrittenDownWhileItCannotRun) {
  std::map<std::string, std::size_t> noted;
  const auto note = [&](const std::string& call) { noted[call] = ReadUnfinished().size(); };
  link.log = note;
  Run({1});
  EXPECT_EQ(noted["getVersionFromBoot 16"], 0U);
  EXPECT_EQ(noted["enterBoot 16"], 1U);
  EXPECT_EQ(noted["endProgramming 16"], 1U);
  EXPECT_EQ(ReadUnfinished().size(), 0U) << "It is written.";
  link.devices[16].state = link.devices[17].state = 1;
  Refresh();
  link.Fail("enterBoot", 1);
  Run();
  EXPECT_EQ(ReadUnfinished().size(), 0U) << "Nothing happened to it.";
  link.log = {};
  link.Fail("sendData", 6);  // The second block of the second device.
  user.answers = {ui::Answer::No};
  Run();
  ASSERT_EQ(ReadUnfinished().size(), 1U);
  EXPECT_EQ(ReadUnfinished()[0].Name, "ALT(DEC) Motor");
  EXPECT_EQ(ReadUnfinished()[0].Package, "chosen.qal");
}

TEST_F(ProgrammingRunTest, TakesTheBlockSizeThatIsAsked) {
  gBlockOverride = true;
  const std::string invalid = "Ok !|Invalid Blocksize specified!";
  const std::string aborted = "Ok !|Programming Aborted - Device left in Boot mode!";
  const struct {
    std::deque<std::string> answers;
    std::size_t elements;  // 0: nothing is sent.
    Calls boxes;
  } cases[] = {{{"4"}, 10, {}},
               {{" 2 "}, 6, {}},
               {{"1.6"}, 6, {}},
               {{"2.5"}, 6, {}},
               {{"3", "two", "-1", "4"}, 10, {invalid, invalid, invalid}},
               {{" ", ""}, 0, {invalid, aborted}}};
  for (const auto& c : cases) {
    link.devices[16].state = 1;
    Refresh();
    user.inputAnswers = c.answers;
    user.inputs.clear(), user.boxes.clear(), link.blocks.clear();
    EXPECT_EQ(ProgramDevice(1, "Programming: ", progress), c.elements != 0);
    EXPECT_EQ(link.blocks.empty() ? 0 : link.blocks.back().size(), c.elements) << c.answers.front();
    EXPECT_EQ(user.boxes, c.boxes);
    EXPECT_EQ(user.inputs, Calls(c.answers.size(), "Blocksize Override|Enter a Blocksize: (1, 2 or 4) | 1"));
  }
}

}  // namespace
}  // namespace tarnwick::test
