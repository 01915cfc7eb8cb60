#include "programmer/Verify.h"

#include "ProgrammerFixture.h"
#include "programmer/modProgrammer.h"

namespace tarnwick::test {
namespace {

class VerifyTest : public ProgrammerFixture {
 protected:
  VerifyTest() { Use(CountedWords(3)); }

  void Use(const ImageWords& words) {
    Load(5, "", {{"Azm", 16, words}, {"Alt", 17, words}});
    for (const std::int32_t address : {16, 17}) {
      ScriptedDevice& device = link.devices[address];
      device.major = 4, device.minor = 15, device.hwRev = 4;
      device.memory = words;
      device.memory[0xFFFC] = 0;
    }
    Refresh();
  }
  bool Verify() { return VerifyDevice(1, progress) == VerifyEnd::Identical; }
};

TEST_F(VerifyTest, ReadsTheGivenWordsOneByOneTheFirstOfOldHardwareFromItsTop) {
  Use({{0, 0x2101}, {3, 2}, {4, 0xFF00}});
  EXPECT_TRUE(Verify());
  EXPECT_THAT(link.calls, ElementsAre("read 16 0 0", "read 16 3 3", "read 16 4 4"));
  EXPECT_THAT(user.boxes, IsEmpty());
  EXPECT_EQ(gTotalWords, 7);
  EXPECT_EQ(user.pumps, 3 + 8 + 3 * 2);  // Each read, each word, and two for each display.

  link.devices[16].memory = {{0xFFFC, 0x2101}, {0xFFFF, 2}, {4, 0xFF00}};
  gDevices[1].HwRev = 3;
  link.calls.clear();
  EXPECT_TRUE(Verify());
  EXPECT_THAT(link.calls, ElementsAre("read 16 65532 65532", "read 16 65535 65535", "read 16 4 4"));
}

TEST_F(VerifyTest, LocksTheHandControlBeforeAnythingIsRead) {
  link.serialMode = 2;
  EXPECT_EQ(VerifyAll(std::array{1}, progress), VerifyEnd::Identical);
  ASSERT_GE(link.calls.size(), 3U);
  link.calls.resize(3);
  EXPECT_THAT(link.calls, ElementsAre("getSerialMode", "lockHc", "read 16 0 0"));
}

TEST_F(VerifyTest, TakesNoResultButOneForAnAnswer) {
  EXPECT_EQ(VerifyRefusal(1), "");
  link.readResult = 2;
  EXPECT_EQ(VerifyRefusal(1), "AZM(RA) Motor: Verify not supported for this version");
  user.answers = {ui::Answer::Retry, ui::Answer::Cancel};
  EXPECT_FALSE(Verify());
  const std::string failed = "RetryCancel !|Error Verifying Data at Address: 0";
  EXPECT_THAT(user.boxes, ElementsAre(failed, failed, "Ok !|Verify Cancelled by User"));
}

TEST_F(VerifyTest, FindsEachWrongWordAndReadsNoPaddedOne) {
  ImageWords words = CountedWords(255);
  for (std::int32_t gap = 100; gap < 110; ++gap) words.erase(gap);  // Not in the device either.
  Use(words);
  for (const auto& [word, value] : words) {
    for (const std::int32_t wrong : {value ^ 0x01, value ^ 0x0100}) {
      link.devices[16].memory[word] = wrong;
      EXPECT_FALSE(Verify());
      EXPECT_EQ(user.LastBox(), "Ok !|Found Difference at Address: " + std::to_string(word) +
                                    "\r\n\r\nValue of " + std::to_string(wrong) + " should be " +
                                    std::to_string(value));
    }
    link.devices[16].memory[word] = value;
  }
  EXPECT_EQ(user.boxes.size(), 2 * words.size());
  progress.labels.clear();
  EXPECT_TRUE(Verify());
  EXPECT_THAT(progress.labels,
              ElementsAre("Verifying: Azm : 0%", "Verifying: Azm : 0%", "Verifying: Azm : 20%",
                          "Verifying: Azm : 39%", "Verifying: Azm : 59%", "Verifying: Azm : 78%",
                          "Verifying: Azm : 98%", "Verifying: Azm : 100%"));
}

}  // namespace
}  // namespace tarnwick::test
