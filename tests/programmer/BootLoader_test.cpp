#include "programmer/BootLoader.h"

#include "ProgrammerFixture.h"
#include "programmer/ProgramDevice.h"
#include "programmer/modProgrammer.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

const std::string kQuestion =
    "YesNo ?|Your BootLoader on this device needs to be upgraded before\r\n"
    "this version of firmware can be programmed.\r\n\r\n"
    "Would you like to upgrade your BootLoader and then continue\r\n"
    "on with programming your firmware?";

class BootLoaderTest : public ProgrammerFixture {
 protected:
  void Select(const std::string& text) {
    WriteFile(path, text);
    gQAL->LoadQALfile(path);
    MatchPackageDevices();
  }
  bool Upgrade(std::int32_t row, std::int32_t hwRev) {
    gDevices[row].HwRev = hwRev;
    gDevices[row].State = McState::Running;
    return UpgradeBootLoader(row, "Upgrading BootLoader: ", gQAL->RealFilename(), progress);
  }

  TempFolder folder;
  std::filesystem::path path = folder / "chosen.qal";
  /// The rows of the table are its fourth and its second device.
  const ImageWords some = CountedWords(3);
  const std::string shuffled =
      PackageText(5, "5", {{"Hub", 40, some}, {"Alt", 17, some}, {"Hub 2", 41, some}, {"Azm", 16, some}});
};

TEST_F(BootLoaderTest, ComparesTheWordsOfRevision2) {
  gDevices[1].HwRev = 2;
  EXPECT_EQ(CheckBootLoader(1), BootLoaderCheck::NotNeeded) << "Its words cannot be read.";
  link.devices[16].memory = {{0, 0x160A}, {1, 0x158A}, {2, 0x2F00}};
  EXPECT_EQ(CheckBootLoader(1), BootLoaderCheck::AsExpected);
  for (const std::int32_t word : {0, 1, 2}) {
    ++link.devices[16].memory[word];
    EXPECT_EQ(CheckBootLoader(1), BootLoaderCheck::Outdated) << word;
    --link.devices[16].memory[word];
  }
  EXPECT_EQ(link.calls, Calls(5, "read 16 0 2"));
  link.readResult = 2;
  EXPECT_EQ(CheckBootLoader(1), BootLoaderCheck::NotNeeded) << "Only 1 is an answer.";
}

TEST_F(BootLoaderTest, AsksRevisions5And6AndSettlesTheRow) {
  Load(5, "6,5", {{"Azm", 16, CountedWords(3)}});
  using enum BootLoaderCheck;
  const struct {
    std::int32_t hwRev, hwRevApp, result, version;
    BootLoaderCheck check;
    std::tuple<std::int32_t, std::int32_t, std::int32_t> after;  // Revision now, running and in boot mode.
  } cases[] = {{5, 0, 1, 1, NoAnswer, {5, 0, 9}},  {5, 0, 0, 0, NotNeeded, {5, 0, 9}},
               {6, 0, 0, 2, NotNeeded, {6, 0, 9}}, {5, 0, 0, 1, Outdated, {6, 6, 6}},
               {6, 5, 0, 1, Outdated, {5, 5, 9}},  {4, 0, 0, 1, NotNeeded, {4, 0, 9}},
               {7, 0, 0, 1, NotNeeded, {7, 0, 9}}};
  for (const auto& c : cases) {
    link.devices[16].bootVersionResult = c.result;
    link.devices[16].bootVersion = c.version;
    DeviceEntry& row = gDevices[1];
    row.HwRev = c.hwRev, row.HwRevApp = c.hwRevApp, row.HwRevBoot = 9;
    EXPECT_EQ(CheckBootLoader(1), c.check);
    EXPECT_EQ(std::tuple(row.HwRev, row.HwRevApp, row.HwRevBoot), c.after);
  }
  EXPECT_EQ(link.calls, Calls(std::size(cases) - 2, "getVersionFromBoot 16"));
}

TEST_F(BootLoaderTest, WritesThePackageOfTheRevisionAndLoadsTheSelectedOneAgain) {
  Select(shuffled);
  user.answers = {ui::Answer::No};
  EXPECT_FALSE(Upgrade(1, 2));
  EXPECT_THAT(user.Said(), ElementsAre(kQuestion));
  EXPECT_THAT(link.calls, IsEmpty());
  using Case = std::tuple<std::int32_t, std::size_t, std::int32_t>;  // A word tells which package it is.
  for (const auto& [hwRev, word, low] : {Case{5, 0x347, 5}, {6, 0x347, 6}, {4, 0, 0x0A}}) {
    link.blocks.clear(), progress.labels.clear();
    link.devices[16].state = 1;
    link.devices[16].bootHwRev = hwRev;
    EXPECT_TRUE(Upgrade(1, hwRev));
    EXPECT_EQ(progress.labels.front(), "Upgrading BootLoader: Azm : 0%");
    EXPECT_EQ(link.blocks.at(word)[2], low) << hwRev;
    EXPECT_EQ(gQAL->RealFilename(), path);
    EXPECT_EQ(gDevices[1].QalIndex * 10 + gDevices[2].QalIndex, 42);
  }
  EXPECT_THAT(user.boxes, ElementsAre(kQuestion));
}

TEST_F(BootLoaderTest, APackageLostOrReplacedMeanwhileIsToldAndNeverWritten) {
  const std::string lost = "Ok !|Error 1 : QAL File Not Found at Line 0";
  Select(shuffled);
  link.log = [this](const std::string& call) {
    if (call == "endProgramming 16") std::filesystem::remove(path);
  };
  EXPECT_FALSE(Upgrade(1, 5));
  EXPECT_EQ(gDevices[1].QalIndex, 0);
  link.calls.clear();
  EXPECT_FALSE(ProgramDevice(1, "Programming: ", progress));
  EXPECT_THAT(link.calls, IsEmpty());
  EXPECT_THAT(user.Said(), ElementsAre(lost, lost));

  std::string other = shuffled;
  other.back() = other[other.size() - 3];  // As long, and what is behind the last line end is not read.
  link.devices[16].state = 1;
  Select(shuffled);
  link.log = [&](const std::string& call) {
    if (call == "endProgramming 16") WriteFile(path, other);
  };
  EXPECT_FALSE(Upgrade(1, 5));
  EXPECT_FALSE(gQAL->ErrorsFound());
  EXPECT_THAT(user.Said(), ElementsAre("Ok !|The package is no longer the one that was chosen"));
}

}  // namespace
}  // namespace tarnwick::test
