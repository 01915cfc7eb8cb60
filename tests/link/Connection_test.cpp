#include "link/Connection.h"

#include <gmock/gmock.h>

#include "support/LinkDouble.h"
#include "support/UserDouble.h"

namespace tarnwick {
namespace {

using Calls = std::vector<std::string>;

constexpr const char* kVirtualPort =
    "Tarnwick should not be connected to the Skelmirra virtual port.\r\n"
    "Make a direction connection to a real hand control instead.";
constexpr const char* kTooOld =
    "Hand control firmware does not support upgrade interface.\r\n"
    "Use your mount's PC Port or update the hand control to the latest version.";

struct Case {
  std::int32_t open;
  std::int32_t mode;
  std::int32_t skelmirra;
  std::int32_t upgrade;
  bool usable;
  std::string box;
  Calls calls;
};

TEST(Connection, IsDecidedInTheToldOrder) {
  const Calls open{"initSerial COM7"};
  const Calls direct{"initSerial COM7", "getSerialMode"};
  const std::string none = "No Telescope found on COM7";
  const Case kCases[] = {
      {0, 0, 0, 1, true, "", direct},
      {0, 1, 0, 1, true, "", direct},
      {0, -2, 0, 1, true, "", direct},
      {-1, 2, 1, 0, false, "Error Opening COM7", open},
      {-2, 2, 1, 0, false, none, open},
      {-5, 2, 1, 0, false, none, open},
      {-8, 2, 1, 0, false, none, open},
      {-9, 2, 1, 0, false, "", open},
      {1, 2, 1, 0, false, "", open},
      {0, 2, 0, 1, false, kVirtualPort, {"initSerial COM7", "getSerialMode", "testSkelmirra", "initSerial "}},
      {0,
       2,
       1,
       1,
       false,
       kTooOld,
       {"initSerial COM7", "getSerialMode", "testSkelmirra", "testUpgradeSupport", "initSerial "}},
      {0,
       2,
       -1,
       0,
       true,
       "",
       {"initSerial COM7", "getSerialMode", "testSkelmirra", "testUpgradeSupport", "lockHc"}},
  };
  for (const Case& c : kCases) {
    test::LinkDouble link;
    test::UserDouble user;
    gComPort = "COM7";
    link.openResult = c.open;
    link.serialMode = c.mode;
    link.skelmirraResult = c.skelmirra;
    link.upgradeSupportResult = c.upgrade;
    EXPECT_EQ(OpenConnection(), c.usable) << c.open << " " << c.box;
    EXPECT_EQ(link.calls, c.calls) << c.open << " " << c.box;
    EXPECT_EQ(gComPort, "COM7");
    if (c.box.empty()) {
      EXPECT_TRUE(user.boxes.empty()) << user.LastText();
    } else {
      EXPECT_THAT(user.boxes, testing::ElementsAre(test::Box{c.box, ui::Buttons::Ok, ui::Icon::Exclamation}));
    }
  }
}

TEST(Connection, ClosesByTheEmptyName) {
  test::LinkDouble link;
  CloseConnection();
  EXPECT_EQ(link.calls, Calls{"initSerial "});
}

TEST(Connection, LocksAHandControlOnly) {
  for (const std::int32_t mode : {0, 1, 2, 3}) {
    test::LinkDouble link;
    link.serialMode = mode;
    LockHandControl();
    EXPECT_EQ(link.calls, mode == 2 ? Calls({"getSerialMode", "lockHc"}) : Calls{"getSerialMode"});
  }
}

}  // namespace
}  // namespace tarnwick
