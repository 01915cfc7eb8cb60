#include "programmer/ProgramDevice.h"

#include "ProgrammerFixture.h"
#include "programmer/modProgrammer.h"

namespace tarnwick::test {
namespace {

const std::string kAborted = "Ok !|Programming Aborted - Device left in Boot mode!";
const std::string kInvalidSize = "Ok !|Invalid Blocksize specified!";

std::string Restart(const std::string& word) {
  return "YesNo X|An Error occurred Programming Data at Address: " + word +
         "\r\n\r\nIt is highly recommended to Restart Programming of this device"
         "\r\n\r\nWould you like to Restart Programming?";
}

class ProgramDeviceTest : public ProgrammerFixture {
 protected:
  ProgramDeviceTest() {
    link.devices[16].hwRev = 4;
    Use(CountedWords(3));
  }
  void Use(const ImageWords& words) { Load(5, "", {{"Azm", 16, words}}); }
  bool Run() {
    Refresh();
    gProgramming = true;
    return ProgramDevice(1, "Programming: ", progress);
  }
};

TEST_F(ProgramDeviceTest, PlainRunInItsOrder) {
  Refresh();
  Calls order;
  user.log = link.log = progress.log = [&order](const std::string& event) { order.push_back(event); };
  gProgramming = true;
  EXPECT_TRUE(ProgramDevice(1, "Programming: ", progress));
  EXPECT_THAT(order, ElementsAre("label Programming: Azm : 0%", "pump", "bar", "caption MC 0%", "pump",
                                 "enterBoot 16", "getHwRevFromBoot 16", "getSerialMode", "getMcState 16",
                                 "startProgramming 16", "getMcState 16", "pump", "sendData 16",
                                 "label Programming: Azm : 0%", "pump", "bar", "caption MC 0%", "pump",
                                 "pump", "sendData 16", "endProgramming 16", "label Programming: Azm : 100%",
                                 "pump", "bar", "caption MC 100%", "pump"));
  EXPECT_THAT(link.blocks, ElementsAre(ElementsAre(0, 0, 0x00, 0x21, 0x01, 0x21),
                                       ElementsAre(0, 2, 0x02, 0x21, 0x03, 0x21)));
  EXPECT_TRUE(gProgramming);
}

TEST_F(ProgramDeviceTest, EntersFromTheStateItFinds) {
  using Case = std::tuple<std::int32_t, std::int32_t, std::string, std::string>;
  for (const auto& [state, hwRev, made, told] :
       {Case{2, 0, "startProgramming 16", ""}, Case{3, 0, "", ""},
        Case{1, 3, "", "Ok !|Unable to start programming."}, Case{0, 4, "", "Ok !|No response from MC"},
        Case{9, 4, "", "Ok !|No response from MC"}}) {
    link.devices[16].state = state;
    link.devices[16].hwRev = hwRev;
    user.boxes.clear();
    EXPECT_EQ(Run(), told.empty());
    std::string changing;
    for (const std::string& call : link.calls) {
      if (call == "enterBoot 16" || call == "startProgramming 16") changing += call;
    }
    EXPECT_EQ(changing, made);
    EXPECT_EQ(user.LastBox(), told);
  }
}

TEST_F(ProgramDeviceTest, ChoosesTheBlockSize) {
  const struct {
    std::int32_t serialMode, bootHwRev;
    std::deque<std::string> answers;  // Empty: no override.
    std::string proposed;
    std::size_t elements;  // 0: nothing is sent.
    Calls boxes;
  } cases[] = {
      {0, 0, {}, "", 6, {}},
      {0, 5, {}, "", 4, {}},
      {2, 0, {}, "", 4, {}},
      {2, 0, {"4"}, " 1", 10, {}},
      {0, 0, {" 2 "}, " 2", 6, {}},
      {0, 5, {"1.6"}, " 1", 6, {}},
      {0, 0, {"2.5"}, " 2", 6, {}},
      {0, 0, {"3", "two", "-1", "4"}, " 2", 10, {kInvalidSize, kInvalidSize, kInvalidSize}},
      {0, 0, {" ", ""}, " 2", 0, {kInvalidSize, kAborted}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.answers.empty() ? "no override" : c.answers.front());
    link.devices[16].state = 1;
    link.serialMode = c.serialMode;
    link.devices[16].bootHwRev = c.bootHwRev;
    gBlockOverride = !c.answers.empty();
    user.inputAnswers = c.answers;
    user.inputs.clear(), user.boxes.clear(), link.blocks.clear();
    EXPECT_EQ(Run(), c.elements != 0);
    EXPECT_EQ(link.blocks.empty() ? 0 : link.blocks.back().size(), c.elements);
    EXPECT_THAT(link.calls, testing::Contains("getSerialMode"));
    EXPECT_EQ(user.boxes, c.boxes);
    EXPECT_EQ(user.inputs,
              Calls(c.answers.size(), "Blocksize Override|Enter a Blocksize: (1, 2 or 4) |" + c.proposed));
  }
}

TEST_F(ProgramDeviceTest, SendsPaddedWordsAndShowsProgressAtMultiplesOf50) {
  Use({{300, 0x120A}, {301, 0x118A}});
  EXPECT_TRUE(Run());
  ASSERT_EQ(link.blocks.size(), 152U);
  EXPECT_THAT(link.blocks[150], ElementsAre(1, 44, 10, 18, 138, 17));
  EXPECT_THAT(link.blocks[151], ElementsAre(1, 46, 0xFF, 0x3F, 0xFF, 0x3F));
  EXPECT_THAT(progress.captions, ElementsAre("MC 0%", "MC 0%", "MC 17%", "MC 33%", "MC 50%", "MC 66%",
                                             "MC 83%", "MC 99%", "MC 100%"));
}

TEST_F(ProgramDeviceTest, RestartsTheImageAsOftenAsTheUserWants) {
  link.Fail("sendData", 2);
  link.Fail("sendData", 3);
  EXPECT_TRUE(Run());
  EXPECT_THAT(user.boxes, ElementsAre(Restart("2"), Restart("0")));
  std::vector<std::int32_t> sent;
  for (const auto& block : link.blocks) sent.push_back(block[1]);
  EXPECT_THAT(sent, ElementsAre(0, 2, 0, 0, 2));
  EXPECT_EQ(std::count(link.calls.begin(), link.calls.end(), "startProgramming 16"), 1);
  EXPECT_EQ(progress.labels.size(), 6U);  // Start, word 0, back to 0 twice, word 0, end.
}

}  // namespace
}  // namespace tarnwick::test
