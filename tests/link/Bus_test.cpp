// Which calls find the devices behind a port, and which leave it.
#include "link/Bus.h"

#include <gtest/gtest.h>

#include "link/Connection.h"
#include "link/Devices.h"
#include "link/LastSeen.h"
#include "settings/Settings.h"
#include "support/LinkDouble.h"
#include "support/UserDouble.h"

namespace tarnwick::test {
namespace {

class Bus : public testing::Test {
 protected:
  Bus() {
    CloseConnection();
    link.TakeCalls();
    gComPort = "COM5";
    SetupDevices(0);
    ForgetSeen();
    link.devices[16] = {.state = 1, .major = 4, .model = 5, .hwRev = 2};
    link.devices[17] = {.state = 0};
  }
  LinkDouble link;
  UserDouble user;
};

TEST_F(Bus, ClosesAPortThatWasOpenedWhenTheUserGoesOnWithoutOne) {
  GoOnWithoutPort();
  EXPECT_EQ(link.TakeCalls(), "") << "No port was opened.";
  gComPort = "COM5";
  EXPECT_TRUE(FindDevices());
  link.TakeCalls();
  GoOnWithoutPort();
  EXPECT_EQ(link.TakeCalls() + gComPort, "initSerial ;");
  GoOnWithoutPort();
  EXPECT_EQ(link.TakeCalls(), "");
  gComPort = "COM5";
  link.openResult = -1;
  EXPECT_FALSE(FindDevices());
  link.TakeCalls();
  GoOnWithoutPort();
  EXPECT_EQ(link.TakeCalls(), "") << "It did not open.";
  gComPort = "COM5", link.openResult = 0;
  link.devices[16].major = 2, link.devices[16].model = 1;
  EXPECT_FALSE(FindDevices()) << "Too old; the port stays open.";
  link.TakeCalls();
  GoOnWithoutPort();
  EXPECT_EQ(link.TakeCalls(), "initSerial ;");
}

TEST_F(Bus, ForgetsWhatItKnewAndKeepsWhatADeviceLastTold) {
  gDevices[1].HwRevApp = gDevices[1].HwRevBoot = 7;
  EXPECT_TRUE(FindDevices());
  EXPECT_EQ(gDevices[1].HwRevApp, 2);
  EXPECT_EQ(gDevices[1].HwRevBoot, 0) << "Of a device that was there before.";
  link.devices[16] = {.state = 2, .bootHwRev = 5, .bootVersion = 1};
  EXPECT_TRUE(FindDevices());
  EXPECT_EQ(SeenText(LastSeen(16)), "Vendral Corvane, HwRev 2") << "An old boot loader is not believed.";
  link.devices[16].bootVersion = 2;
  EXPECT_TRUE(FindDevices());
  EXPECT_EQ(LastSeen(16).HwRev, 5);
  EXPECT_EQ(SeenText(LastSeen(17)), "");
}

}  // namespace
}  // namespace tarnwick::test
