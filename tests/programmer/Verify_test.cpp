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
  bool Verify() { return VerifyDevice(1, progress); }

  const std::vector<std::int32_t> rows{1, 2};
};

TEST_F(VerifyTest, RefusesWhatCannotBeCompared) {
  EXPECT_EQ(VerifyRefusal(rows), "");
  EXPECT_THAT(link.calls, ElementsAre("read 16 65532 65532", "read 17 65532 65532"));

  gDevices[2].Version = 4.16;
  EXPECT_EQ(VerifyRefusal(rows), "ALT(DEC) Motor: Cannot Verify if Version Different!");
  link.devices[17].memory.erase(0xFFFC);
  EXPECT_FALSE(SupportsVerify(2));
  EXPECT_EQ(VerifyRefusal(2), "ALT(DEC) Motor: Verify not supported for this version");
  gDevices[2].QalIndex = 0;
  EXPECT_EQ(VerifyRefusal(2), ImageRefusal(2));
  gDevices[2].State = McState::BootMode;
  gDevices[2].StateName = "Boot Mode";
  EXPECT_EQ(VerifyRefusal(rows), "ALT(DEC) Motor: Verify unsupported when firmware in State: Boot Mode");
  EXPECT_THAT(user.boxes, IsEmpty());
}

TEST_F(VerifyTest, ReadsTheGivenWordsOneByOne) {
  Use({{0, 0x2101}, {1, 2}, {5, 0xFF00}});
  EXPECT_TRUE(Verify());
  EXPECT_THAT(link.calls, ElementsAre("read 16 0 0", "read 16 1 1", "read 16 5 5"));
  EXPECT_THAT(user.boxes, IsEmpty());
  EXPECT_EQ(gTotalWords, 7);
  EXPECT_EQ(user.pumps, 3 + 8 + 3 * 2);  // Each read, each word, and two for each display.
}

TEST_F(VerifyTest, OldHardwareKeepsTheFirstWordsAtTheTop) {
  Use(CountedWords(4));
  for (std::int32_t word = 0; word < 4; ++word) {
    link.devices[16].memory[0xFFFC + word] = 0x2100 + word;
    link.devices[16].memory.erase(word);
  }
  gDevices[1].HwRev = 3;
  EXPECT_TRUE(Verify());
  EXPECT_THAT(link.calls, ElementsAre("read 16 65532 65532", "read 16 65533 65533", "read 16 65534 65534",
                                      "read 16 65535 65535", "read 16 4 4"));
  link.devices[16].memory[0xFFFE] = 7;
  EXPECT_FALSE(Verify());
  EXPECT_THAT(user.boxes,
              ElementsAre(Exclaim("Found Difference at Address: 2\r\n\r\nValue of 7 should be 8450")));
}

TEST_F(VerifyTest, ShowsProgressAtMultiplesOf50) {
  EXPECT_TRUE(Verify());
  EXPECT_THAT(progress.labels,
              ElementsAre("Verifying: Azm : 0%", "Verifying: Azm : 0%", "Verifying: Azm : 100%"));
  progress.captions.clear();
  Use(CountedWords(103));
  link.devices[16].memory[100] = 0;
  EXPECT_FALSE(Verify());
  EXPECT_THAT(progress.captions, ElementsAre("MC 0%", "MC 0%", "MC 49%", "MC 97%"));
}

TEST_F(VerifyTest, RetriesAsLongAsTheUserWants) {
  const Box retry{"Error Verifying Data at Address: 1", ui::Buttons::RetryCancel, ui::Icon::Exclamation};
  link.Fail("read", 2);
  link.Fail("read", 3);
  EXPECT_TRUE(Verify());
  EXPECT_THAT(user.boxes, ElementsAre(retry, retry));

  user.boxes.clear();
  link.devices[16].memory.erase(1);
  user.answers = {ui::Answer::Retry, ui::Answer::Cancel};
  EXPECT_FALSE(Verify());
  EXPECT_THAT(user.boxes, ElementsAre(retry, retry, Exclaim("Verify Cancelled by User")));
}

TEST_F(VerifyTest, StopsAfterTheWordWhenCancelled) {
  user.onPump = [this] { gCancelVerify = link.calls.size() == 2; };
  EXPECT_FALSE(Verify());
  EXPECT_EQ(link.calls.size(), 2U);
  EXPECT_THAT(user.boxes, ElementsAre(Exclaim("Verify cancelled by user")));
}

TEST_F(VerifyTest, TheFirstDifferenceEndsTheRun) {
  int restored = 0;
  const auto restore = [&restored] { ++restored; };
  EXPECT_TRUE(VerifyAll(rows, progress, restore));
  EXPECT_EQ(restored, 2);
  link.calls.clear();
  link.devices[16].memory[3] = 1;
  EXPECT_FALSE(VerifyAll(rows, progress, restore));
  EXPECT_EQ(restored, 3);
  EXPECT_EQ(link.calls.back(), "read 16 3 3");
}

}  // namespace
}  // namespace tarnwick::test
