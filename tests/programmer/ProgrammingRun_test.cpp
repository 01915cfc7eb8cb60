#include "programmer/ProgrammingRun.h"

#include "ProgrammerFixture.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

/// Runs as they begin ("Programming: Azm"), and each restoring of the frame.
class ProgrammingRunTest : public ProgrammerFixture {
 protected:
  ProgrammingRunTest() {
    WriteFile(folder / "chosen.qal",
              PackageText(14, "5", {{"Azm", 16, CountedWords(3)}, {"Alt", 17, CountedWords(3)}}));
    gQAL->LoadQALfile(folder / "chosen.qal");
    MatchPackageDevices();
    progress.log = [this](const std::string& event) {
      const std::size_t end = event.find(" : 0%");
      if (end == std::string::npos) return;
      const std::string run = event.substr(6, end - 6);
      if (order.empty() || order.back() != run) order.push_back(run);
    };
  }
  bool Program(std::int32_t hwRev) {
    for (const std::int32_t row : {1, 2}) {
      gDevices[row].HwRev = hwRev;
      gDevices[row].State = McState::Running;
    }
    user.boxes.clear(), order.clear();
    return ProgramAll(std::vector{1, 2}, progress, [this] { order.emplace_back("restore"); });
  }

  TempFolder folder;
  Calls order;
};

TEST_F(ProgrammingRunTest, RenewsTheBootLoaderJustBeforeEachDevice) {
  link.devices[17].bootVersion = 1;
  EXPECT_TRUE(Program(5));
  EXPECT_THAT(order, ElementsAre("Programming: Azm", "restore", "Upgrading BootLoader: Alt", "restore",
                                 "Programming: Alt", "restore"));
}

TEST_F(ProgrammingRunTest, LeavesTheDevicesAfterAFailure) {
  struct Case {
    std::int32_t hwRev;
    std::function<void(LinkDouble&)> prepare;
    Calls order;
    std::size_t boxes;
  };
  const std::vector<Case> cases = {
      {4, [](LinkDouble& l) { l.Fail("enterBoot", 1); }, {"Programming: Azm", "restore"}, 1},
      {5,
       [](LinkDouble& l) { l.devices[16].bootVersion = 1, l.Fail("enterBoot", 1); },
       {"Upgrading BootLoader: Azm", "restore"},
       1},
      {2, [](LinkDouble& l) { l.devices[16].memory = CountedWords(2); }, {"restore"}, 1},
      {5, [](LinkDouble& l) { l.devices[16].bootVersionResult = 1; }, {}, 0},
  };
  for (const Case& c : cases) {
    LinkDouble failing;
    c.prepare(failing);
    user.answers = {ui::Answer::No};
    EXPECT_FALSE(Program(c.hwRev));
    EXPECT_EQ(order, c.order);
    EXPECT_EQ(user.boxes.size(), c.boxes);
    for (const std::string& call : failing.calls) EXPECT_FALSE(call.ends_with("17")) << call;
  }
}

}  // namespace
}  // namespace tarnwick::test
