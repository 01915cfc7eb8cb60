#include "link/Devices.h"

#include <gtest/gtest.h>

#include "link/Connection.h"
#include "platform/program.h"
#include "support/LinkDouble.h"

namespace tarnwick {
namespace {

using Calls = std::vector<std::string>;

class Devices : public testing::Test {
 protected:
  Devices() {
    gComPort = "COM1";
    gDeviceClass = 0;
    SetupDevices(0);
  }
  DeviceEntry& Row() { return gDevices[1]; }

  test::LinkDouble link;
  test::ScriptedDevice& mount = link.devices[16];
};

TEST_F(Devices, AreSetUpFromNothingByClass) {
  Row().Version = 4.07;
  SetupDevices(2);
  SetupDevices(-1);
  EXPECT_EQ(Row().Version, 4.07) << "another class leaves the table";
  SetupDevices(1);
  ASSERT_EQ(gDeviceCount(), 2);
  EXPECT_EQ(gDevices[1].Address, 18);
  EXPECT_EQ(gDevices[1].Name, "Focuser Motor");
  EXPECT_EQ(gDevices[1].Version, 0);
  EXPECT_EQ(gDevices[1].StateName, "");
  EXPECT_EQ(gDevices[2].Address, 19);
  EXPECT_EQ(gDevices[2].Name, "FDR Motor");
  SetupDevices(0);
  EXPECT_EQ(gDevices[1].Address, 16);
  EXPECT_EQ(gDevices[1].Name, "AZM(RA) Motor");
  EXPECT_EQ(gDevices[2].Address, 17);
  EXPECT_EQ(gDevices[2].Name, "ALT(DEC) Motor");
  EXPECT_THROW(gDevices[0], std::out_of_range);
  EXPECT_THROW(gDevices[3], std::out_of_range);
}

TEST_F(Devices, NameTheirStates) {
  const struct {
    std::int32_t result;
    McState state;
    const char* name;
    double version;
  } kCases[] = {
      {0, McState::NoResponse, "No Response", 9}, {1, McState::Running, "Running", 7 / 100.0 + 4},
      {2, McState::BootMode, "Boot Mode", 9},     {3, McState::Program, "Program", 9},
      {4, McState::Unknown, "Unknown", 9},        {-1, McState::Unknown, "Unknown", 9},
      {257, McState::Unknown, "Unknown", 9},      {INT32_MIN, McState::Unknown, "Unknown", 9},
  };
  mount.major = 4;
  mount.minor = 7;
  for (const auto& c : kCases) {
    Row().Version = 9;
    mount.state = c.result;
    ReadDeviceState(1);
    EXPECT_EQ(Row().State, c.state) << c.result;
    EXPECT_EQ(Row().StateName, c.name) << c.result;
    EXPECT_EQ(Row().Version, c.version) << c.result;
  }
}

TEST_F(Devices, NameTheirModelsByClass) {
  const char* kNames[] = {"Unknown",
                          "Vendral Kest",
                          "Vendral Kest-B",
                          "Vendral Lorn",
                          "Vendral Mirel",
                          "Vendral Corvane",
                          "Brenmark RX",
                          "Vendral Ossil",
                          "QF3",
                          "Dorvak Series",
                          "Unknown",
                          "Vendral Mirel A",
                          "Vendral Mirel B",
                          "Corvane Pro",
                          "CORVANEM",
                          "NQT",
                          "Unknown"};
  for (gDeviceClass = 0; gDeviceClass < 3; ++gDeviceClass) {
    for (std::int32_t model = -1; model < 17; ++model) {
      mount.model = model;
      RefreshDevice(1);
      const std::string motor = model < 0 ? "Unknown" : kNames[model];
      const std::string accessory = model == 1 ? "Focuser Accessory" : "Unknown";
      EXPECT_EQ(Row().ModelName, gDeviceClass == 0   ? motor
                                 : gDeviceClass == 1 ? accessory
                                                     : "Unknown")
          << model;
      EXPECT_EQ(Row().Model, model);
    }
  }
}

TEST_F(Devices, TakeAModelByTheLowHalfOfTheResult) {
  const std::pair<std::int32_t, bool> kCases[] = {{1, true},  {0x70001, true},  {-65535, true}, {0, false},
                                                  {2, false}, {0x10000, false}, {-1, false}};
  for (const auto& [result, filled] : kCases) {
    std::int32_t model = 99;
    mount.model = 5;
    mount.modelResult = result;
    EXPECT_EQ(ReadModelNumber(16, model), filled) << result;
    EXPECT_EQ(model, filled ? 5 : 99) << result;
    RefreshDevice(1);
    EXPECT_EQ(Row().Model, filled ? 5 : 0) << result;
    EXPECT_EQ(Row().ModelName, filled ? "Vendral Corvane" : "Unknown") << result;
  }
  std::int32_t model = 0;
  ReadModelNumber(0x18010, model);
  EXPECT_EQ(link.calls.back(), "getModel -32752") << "an address is a signed 16-bit value";
}

TEST_F(Devices, ReadTheRevisionThatTheirStateAllows) {
  const struct {
    std::int32_t state, app, appResult, boot, bootResult;  // What the device answers.
    std::int32_t hwRev, hwRevApp, hwRevBoot;               // What the row holds, 8 and 9 before.
  } kCases[] = {
      {1, 4, 1, 6, 1, 4, 4, 9}, {1, 4, 0, 6, 1, 0, 4, 9}, {1, 0, 1, 6, 1, 0, 0, 9}, {2, 4, 1, 6, 1, 6, 8, 6},
      {3, 4, 1, 6, 7, 6, 8, 6}, {3, 4, 1, 6, 0, 0, 8, 6}, {0, 4, 1, 6, 1, 0, 8, 9}, {9, 4, 1, 6, 1, 0, 8, 9},
  };
  for (const auto& c : kCases) {
    mount = {.state = c.state,
             .hwRev = c.app,
             .hwRevResult = c.appResult,
             .bootHwRev = c.boot,
             .bootHwRevResult = c.bootResult,
             .memory = {}};
    Row().HwRev = 7;
    Row().HwRevApp = 8;
    Row().HwRevBoot = 9;
    RefreshDevice(1);
    EXPECT_EQ(Row().HwRev, c.hwRev) << c.state << c.appResult << c.bootResult;
    EXPECT_EQ(Row().HwRevApp, c.hwRevApp) << c.state << c.appResult << c.bootResult;
    EXPECT_EQ(Row().HwRevBoot, c.hwRevBoot) << c.state << c.appResult << c.bootResult;
  }
}

TEST_F(Devices, AreRefreshedInTheToldOrder) {
  const struct {
    std::int32_t state, bootHwRev;
    Calls calls;
  } kCases[] = {
      {0, 5, {"getMcState 16"}},
      {1, 5, {"getMcState 16", "getHwRev 16", "getModel 16"}},
      {2, 4, {"getMcState 16", "getHwRevFromBoot 16"}},
      {2, 5, {"getMcState 16", "getHwRevFromBoot 16", "getVersionFromBoot 16"}},
      {3, 6, {"getMcState 16", "getHwRevFromBoot 16", "getVersionFromBoot 16"}},
      {3, 7, {"getMcState 16", "getHwRevFromBoot 16"}},
  };
  for (const auto& c : kCases) {
    link.calls.clear();
    mount.state = c.state;
    mount.bootHwRev = c.bootHwRev;
    Row().Model = Row().BootVersion = 77;
    Row().Version = 7.7;
    RefreshDevice(1);
    EXPECT_EQ(link.calls, c.calls) << c.state << " " << c.bootHwRev;
    EXPECT_EQ(Row().Model, 0);
    EXPECT_EQ(Row().ModelName, "Unknown");
    EXPECT_EQ(Row().Version, 0);
    EXPECT_EQ(Row().BootVersion, c.calls.size() == 3 && c.state != 1 ? 2 : 0);
  }
}

TEST_F(Devices, KeepTheBootVersionWhenItCannotBeRead) {
  Row().BootVersion = 3;
  Row().State = McState::Running;
  ReadBootVersion(1);
  EXPECT_TRUE(link.calls.empty());
  Row().State = McState::BootMode;
  mount.bootVersionResult = 1;
  ReadBootVersion(1);
  EXPECT_EQ(Row().BootVersion, 3);
}

TEST_F(Devices, TrustAnOldBootLoaderForNoRevisionFiveOrSix) {
  const struct {
    std::int32_t hwRev, app, boot, bootVersion, effective;
  } kCases[] = {{4, 9, 9, 9, 4}, {7, 9, 9, 9, 7}, {0, 5, 5, 2, 0}, {5, 6, 5, 0, 6},
                {5, 0, 5, 1, 0}, {5, 0, 5, 2, 5}, {6, 0, 6, 3, 6}, {6, 0, 6, 0, 0}};
  for (const auto& c : kCases) {
    Row().HwRev = c.hwRev;
    Row().HwRevApp = c.app;
    Row().HwRevBoot = c.boot;
    Row().BootVersion = c.bootVersion;
    EXPECT_EQ(EffectiveHwRev(1), c.effective) << c.hwRev << c.app << c.boot << c.bootVersion;
  }
  ForgetRevisions(1);
  EXPECT_EQ(Row().HwRev + Row().HwRevApp + Row().HwRevBoot, 0);
}

TEST_F(Devices, ShowARevisionOrWhatTheModelTellsOfIt) {
  const std::pair<std::int32_t, const char*> kModels[] = {
      {0, "Unknown"}, {1, "1"}, {2, "Unknown"}, {3, "1"}, {4, "Unknown"}, {5, "2"}, {6, "2"}, {7, "Unknown"}};
  for (const auto& [model, shown] : kModels) {
    Row().Model = model;
    EXPECT_EQ(FormatHwRev(0, 1), shown) << model;
    EXPECT_EQ(FormatHwRev(12, 1), "12");
    EXPECT_EQ(FormatHwRev(-3, 1), "-3");
  }
}

TEST_F(Devices, AreReportedLineByLine) {
  program::Set({"/opt/mount", "Tarnwick", 2, 2, 4});
  mount = {.state = 1, .major = 3, .minor = 10, .model = 10, .hwRev = 4, .memory = {}};
  link.devices[17] = {.state = 2, .bootHwRev = 5, .bootVersion = 1, .memory = {}};
  RefreshDevices();
  link.calls.clear();
  const std::string tail = "EXE Version: 2.2.4\r\nDLL Version: 1.2.3\r\n";
  EXPECT_EQ(BuildStatusReport(),
            "Device: AZM(RA) Motor\r\n    State: Running\r\n    Model: Unknown\r\n    Address: 16\r\n"
            "    Version: 3.10\r\n    HwRev: 4\r\n\r\n"
            "Device: ALT(DEC) Motor\r\n    State: Boot Mode\r\n    Model: Unknown\r\n    Address: 17\r\n"
            "    Version: Unknown\r\n    HwRev: Unknown\r\n\r\n" +
                tail);
  EXPECT_EQ(link.calls, Calls{"getDllVersion"});
  EXPECT_EQ(Row().Model, 10);
  gDevices[2].HwRevApp = 5;
  EXPECT_NE(BuildStatusReport().find("    HwRev: 5\r\n"), std::string::npos) << "seen running before";
  gComPort.clear();
  EXPECT_EQ(BuildStatusReport(), "No COM port specified!\r\n\r\n" + tail);
}

}  // namespace
}  // namespace tarnwick
