#include "programmer/ProgrammingRun.h"

#include "ProgrammerFixture.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

class ProgrammingRunTest : public ProgrammerFixture {
 protected:
  ProgrammingRunTest() {
    WriteFile(folder / "chosen.qal",
              PackageText(14, "5", {{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}}));
    gQAL->LoadQALfile(folder / "chosen.qal");
    MatchPackageDevices();
    link.logBlocks = false;
    progress.log = [this](const std::string& event) {
      if (event.ends_with(" : 0%") && (order.empty() || order.back() != event)) order.push_back(event);
    };
  }
  bool Program() {
    return ProgramAll(rows, progress, [this] { order.emplace_back("restore"); });
  }
  void Revision(std::int32_t hwRev) {
    for (const std::int32_t address : {16, 17}) {
      link.devices[address].model = 14;
      link.devices[address].hwRev = link.devices[address].bootHwRev = hwRev;
    }
    Refresh();
  }

  TempFolder folder;
  const std::vector<std::int32_t> rows{1, 2};
  Calls order;  ///< Runs as they begin, and each restoring of the frame.
};

TEST_F(ProgrammingRunTest, OneAtATimeWithV30) {
  gDevices[1].Model = gDevices[2].Model = 1;
  gDevices[1].Version = 3.01;
  gDevices[2].Version = 2.99;
  EXPECT_TRUE(AllowedTogether(rows));
  gDevices[1].Version = gDevices[2].Version = 3.0;
  EXPECT_FALSE(AllowedTogether(rows));
  EXPECT_THAT(user.boxes, ElementsAre(Exclaim("Cannot Program more than one device at a time with V3.0")));
  gDevices[1].Model = gDevices[2].Model = 2;
  EXPECT_TRUE(AllowedTogether(rows));
  EXPECT_THAT(link.calls, IsEmpty());
}

TEST_F(ProgrammingRunTest, ChecksUntilOneFails) {
  Revision(5);
  EXPECT_TRUE(CheckAll(rows));
  gDevices[1].Model = gDevices[2].Model = 3;
  EXPECT_FALSE(CheckAll(rows));
  EXPECT_THAT(BoxTexts(), ElementsAre("[AZM(RA) Motor] Model number doesn't match QAL file Model Number"));
}

TEST_F(ProgrammingRunTest, RenewsTheBootLoaderJustBeforeEachDevice) {
  Revision(5);
  link.devices[17].bootVersion = 1;
  EXPECT_TRUE(Program());
  EXPECT_THAT(order,
              ElementsAre("label Programming: Azm : 0%", "restore", "label Upgrading BootLoader: Alt : 0%",
                          "restore", "label Programming: Alt : 0%", "restore"));
}

TEST_F(ProgrammingRunTest, LeavesTheDevicesAfterAFailure) {
  struct Case {
    std::string name;
    std::int32_t hwRev;
    std::function<void(LinkDouble&)> prepare;
    Calls order;
    std::size_t boxes;
  };
  const std::vector<Case> cases = {
      {"programming fails",
       4,
       [](LinkDouble& l) { l.Fail("enterBoot", 1); },
       {"label Programming: Azm : 0%", "restore"},
       1},
      {"upgrade fails",
       5,
       [](LinkDouble& l) { l.devices[16].bootVersion = 1, l.Fail("enterBoot", 1); },
       {"label Upgrading BootLoader: Azm : 0%", "restore"},
       1},
      {"upgrade declined",
       2,
       [](LinkDouble& l) {
         l.devices[16].memory = {{0, 1}, {1, 1}, {2, 1}};
       },
       {"restore"},
       1},
      {"boot loader silent", 5, [](LinkDouble& l) { l.devices[16].bootVersionResult = 1; }, {}, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    for (const std::int32_t row : rows) {
      gDevices[row].HwRev = c.hwRev;
      gDevices[row].State = McState::Running;
    }
    LinkDouble failing;
    c.prepare(failing);
    user.answers = {ui::Answer::No};
    user.boxes.clear(), order.clear();
    EXPECT_FALSE(Program());
    EXPECT_EQ(order, c.order);
    EXPECT_EQ(user.boxes.size(), c.boxes);
    for (const std::string& call : failing.calls) EXPECT_FALSE(call.ends_with("17")) << call;
  }
}

}  // namespace
}  // namespace tarnwick::test
