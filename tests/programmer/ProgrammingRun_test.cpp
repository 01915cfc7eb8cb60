// A whole run over the rows, in its order: what it refuses, what stops it, and what it leaves behind.
#include "programmer/ProgrammingRun.h"

#include "ProgrammerFixture.h"
#include "platform/program.h"
#include "programmer/UnfinishedRun.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

const std::vector<PackageDevice> kBoth{{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}};
const std::string kComplete =
    "Ok i|Programming Complete\r\n\r\nCycle the power on the telescope at this point, then press Ok.\r\n"
    "The controller(s) programmed should then be in Running State and\r\nthe proper Version displayed.";

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
  /// A run over the rows, and the calls that change a device.
  std::vector<RowOutcome> Run(std::vector<std::int32_t> rows = {1, 2}) {
    const bool together = rows.size() != 1;
    ProgrammingRun run(std::move(rows), together, judged);
    link.calls.clear();
    run.Execute(progress);
    EXPECT_FALSE(gProgramming);
    return run.Outcomes();
  }
  std::string Changes() {
    std::string changes;
    for (const std::string& call : link.calls)
      if (call.starts_with("enter") || call.starts_with("start") || call.starts_with("end"))
        changes += call + ";";
    return changes;
  }
  /// Nothing is begun, and the user reads `text`.
  void ExpectRefused(const std::string& text, std::vector<std::int32_t> rows = {1, 2}) {
    SCOPED_TRACE(text);
    Run(std::move(rows));
    EXPECT_EQ(Changes(), "");
    EXPECT_THAT(user.Said(), ElementsAre("Ok !|" + text));
  }

  TempFolder folder;
  std::filesystem::path path = folder / "chosen.qal";
  QalIdentity judged;
};

TEST_F(ProgrammingRunTest, ChecksAllLocksAndWritesOneAfterTheOther) {
  link.serialMode = 2;
  Calls order;
  user.log = progress.log = link.log = [&order](const std::string& event) {
    const std::string kind = event.substr(0, event.find(' '));
    if (kind != "pump" && kind != "label" && kind != "bar" && kind != "caption") order.push_back(event);
  };
  gCancelProgram = true;  // Of the run before.
  Run();
  const auto device = [](const std::string& at) {
    return Calls{"getVersionFromBoot " + at,
                 "enterBoot " + at,
                 "getHwRevFromBoot " + at,
                 "getSerialMode",
                 "getMcState " + at,
                 "startProgramming " + at,
                 "getMcState " + at,
                 "sendData " + at,
                 "sendData " + at,
                 "sendData " + at,
                 "sendData " + at,
                 "endProgramming " + at,
                 "rest"};
  };
  const Calls status{"status",        "getMcState 16",       "getHwRevFromBoot 16",  "getVersionFromBoot 16",
                     "getMcState 17", "getHwRevFromBoot 17", "getVersionFromBoot 17"};
  Calls expected{"busy",        "getMcState 16", "getHwRev 16", "getMcState 17",
                 "getHwRev 17", "getSerialMode", "lockHc"};
  for (const Calls& part : {device("16"), device("17"), Calls{"free"}, status, Calls{"box"}, status})
    expected.insert(expected.end(), part.begin(), part.end());
  EXPECT_EQ(order, expected);
  EXPECT_THAT(user.boxes, ElementsAre(kComplete));
}

TEST_F(ProgrammingRunTest, RefusesAllTogetherWhenOneIsOfVersion3) {
  const std::string text = "Cannot Program more than one device at a time with V3.0";
  gModelOverride = true;
  for (const std::int32_t row : {1, 2}) {
    Refresh();
    gDevices[row].Model = 1, gDevices[row].Version = 3.0;
    ExpectRefused(text);
    EXPECT_THAT(link.calls, testing::Contains("getSerialMode")) << "The hand control is locked all the same.";
  }
  for (const auto& [model, version] : {std::pair{1, 3.01}, {1, 2.99}, {2, 3.0}}) {
    link.devices[16].state = link.devices[17].state = 1;
    Refresh();
    gDevices[2].Model = model, gDevices[2].Version = version;
    Run();
    EXPECT_THAT(user.Said(), ElementsAre(kComplete)) << model << " " << version;
  }
  link.devices[16].state = 1;
  Refresh();
  gDevices[1].Model = 1, gDevices[1].Version = 3.0;
  Run({1});
  EXPECT_THAT(user.Said(), ElementsAre(kComplete)) << "Alone it is programmed.";
}

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

TEST_F(ProgrammingRunTest, WritesNothingOfAPackageThatIsGoneBehindTheBootPackage) {
  gModelOverride = true;
  for (const std::string other : {"", "5,6"}) {
    link.devices[16] = {.state = 1, .major = 4, .model = 5, .hwRev = 5, .bootHwRev = 5, .bootVersion = 1};
    Choose(PackageText(5, "5", kBoth));
    link.log = [&](const std::string& call) {
      if (call != "endProgramming 16") return;
      std::filesystem::remove(path);
      if (!other.empty()) WriteFile(path, PackageText(5, other, kBoth));
    };
    const std::string text = other.empty() ? "Error 1 : QAL File Not Found at Line 0"
                                           : "The package is no longer the one that was chosen";
    const RowOutcome outcome = Run().front();
    EXPECT_EQ(Changes(), "enterBoot 16;startProgramming 16;endProgramming 16;");
    EXPECT_THAT(user.Said(), ElementsAre("Ok !|" + text));
    EXPECT_TRUE(outcome.PackageLost);
    ExpectRefused(text);
  }
}

TEST_F(ProgrammingRunTest, BeginsNoFurtherImageAfterACancel) {
  for (const std::string moment : {"endProgramming 16", "getVersionFromBoot 16"}) {
    for (const std::int32_t bootVersion : {1, 2}) {
      SCOPED_TRACE(moment + " " + std::to_string(bootVersion));
      for (const std::int32_t address : {16, 17})
        link.devices[address].state = 1, link.devices[address].bootVersion = bootVersion;
      Refresh();
      link.log = [&](const std::string& call) { gCancelProgram = gCancelProgram || call == moment; };
      Run();
      link.log = {};
      EXPECT_EQ(Changes(), moment[0] == 'e' ? "enterBoot 16;startProgramming 16;endProgramming 16;" : "");
      EXPECT_THAT(user.Said(), IsEmpty()) << "Not complete, and nothing failed.";
    }
  }
}

TEST_F(ProgrammingRunTest, HasTheMotorsNameWrittenDownWhileItCannotRun) {
  std::map<std::string, std::size_t> noted;
  const auto note = [&](const std::string& call) { noted[call] = ReadUnfinished().size(); };
  link.log = note;
  Run({1});
  EXPECT_EQ(noted["getVersionFromBoot 16"], 0U);
  EXPECT_EQ(noted["enterBoot 16"] * 10 + noted["endProgramming 16"], 11U);
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
  EXPECT_EQ(ReadUnfinished()[0].Name + ReadUnfinished()[0].Package, "ALT(DEC) Motorchosen.qal");
}

TEST_F(ProgrammingRunTest, ACancelBeatsAYesAndAnyStopEndsTheRun) {
  link.Fail("sendData", 2);
  bool programming = true;
  progress.log = [&](const std::string& event) {
    if (event == "rest") programming = gProgramming;
  };
  link.log = [&, sent = 0](const std::string& call) mutable {
    gCancelProgram = gCancelProgram || (call.starts_with("sendData") && ++sent == 2);
  };
  user.answers = {ui::Answer::Yes};
  Run();
  EXPECT_EQ(link.blocks.size(), 2U);
  EXPECT_EQ(user.Said().size(), 1U) << "The question, and no word of a cancel.";
  EXPECT_FALSE(programming) << "From the stop on the close box asks about the program.";
  EXPECT_EQ(Changes(), "enterBoot 16;startProgramming 16;")
      << "Left in program state, and no further device.";
}

TEST_F(ProgrammingRunTest, LeavesNoChoiceOfBootPackageToAPackageThatNobodyHeldAgainstTheDevice) {
  gModelOverride = gTypeOverride = true;
  for (const auto& [list, written] : {std::pair{"", false}, {"6,5", false}, {"4", false}, {"5", true}}) {
    SCOPED_TRACE(list);
    link.devices[16] = {.state = 2, .bootHwRev = 5, .bootVersion = 1};
    Choose(PackageText(5, list, kBoth));
    ForgetRevisions(1);
    Run({1});
    EXPECT_EQ(!Changes().empty(), written);
    EXPECT_EQ(gDevices[1].HwRevApp, written ? 5 : 0);
    const std::string refused =
        "Ok !|[AZM(RA) Motor] Hardware Revision doesn't match QAL file Hardware Revision";
    EXPECT_THAT(user.Said(), ElementsAre(written ? kComplete : refused));
  }
}

}  // namespace
}  // namespace tarnwick::test
