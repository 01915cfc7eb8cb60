#include "link/Devices.h"

#include <gtest/gtest.h>

#include "platform/program.h"
#include "settings/Settings.h"
#include "support/LinkDouble.h"

namespace tarnwick {
namespace {

class Devices : public testing::Test {
 protected:
  Devices() { gComPort = "COM1", gDeviceClass = 0; }

  test::LinkDouble link;
  test::ScriptedDevice& mount = link.devices[16];
  DeviceEntry& row = (SetupDevices(0), gDevices[1]);
};

/// What a device answers, and the row of the table then.
struct Case {
  test::ScriptedDevice answers;
  const char* state;
  const char* calls;  ///< Those behind the one for its state.
  double version = 0;
  std::int32_t revision = 0, running = 8, boot = 9, bootVersion = 0;  ///< Before: 7, 8, 9 and 7.
};

const Case kRefreshed[] = {{.answers = {.state = 0, .hwRev = 4}, .state = "No Response", .calls = ""},
                           {.answers = {.state = 4, .hwRev = 4}, .state = "Unknown", .calls = ""},
                           {.answers = {.state = 1, .major = 4, .minor = 25, .hwRev = 6},
                            .state = "Running",
                            .calls = "getHwRev 16;getModel 16;",
                            .version = 4.25,
                            .revision = 6,
                            .running = 6},
                           {.answers = {.state = 1, .major = 4, .minor = 25, .hwRev = 5, .hwRevResult = 0},
                            .state = "Running",
                            .calls = "getHwRev 16;getModel 16;",
                            .version = 4.25,
                            .running = 0},
                           {.answers = {.state = 2, .bootHwRev = 6, .bootHwRevResult = 7},
                            .state = "Boot Mode",
                            .calls = "getHwRevFromBoot 16;getVersionFromBoot 16;",
                            .revision = 6,
                            .boot = 6,
                            .bootVersion = 2},
                           {.answers = {.state = 3, .bootHwRev = 5, .bootVersionResult = 1},
                            .state = "Program",
                            .calls = "getHwRevFromBoot 16;getVersionFromBoot 16;",
                            .revision = 5,
                            .boot = 5},
                           {.answers = {.state = 3, .bootHwRev = 6, .bootHwRevResult = 0},
                            .state = "Program",
                            .calls = "getHwRevFromBoot 16;",
                            .boot = 0},
                           {.answers = {.state = 3, .bootHwRev = 7},
                            .state = "Program",
                            .calls = "getHwRevFromBoot 16;",
                            .revision = 7,
                            .boot = 7}};

TEST_F(Devices, AreRefreshedAsTheirStateAllows) {
  for (const Case& c : kRefreshed) {
    SCOPED_TRACE(testing::Message() << c.state << ", state " << c.answers.state);
    mount = c.answers;
    row = {0, 16, "", 7, "", McState::Unknown, "", 7, 9, 8, 7, 7};
    RefreshDevice(1);
    EXPECT_EQ(static_cast<std::int32_t>(row.State), c.answers.state == 4 ? -1 : c.answers.state);
    EXPECT_EQ(row.StateName, c.state);
    EXPECT_EQ(row.Version, c.version);
    EXPECT_EQ(row.HwRev, c.revision);
    EXPECT_EQ(row.HwRevApp, c.running);
    EXPECT_EQ(row.HwRevBoot, c.boot);
    EXPECT_EQ(row.BootVersion, c.bootVersion);
    EXPECT_EQ(link.TakeCalls(), std::string("getMcState 16;") + c.calls);
    EXPECT_EQ(row.Model, 0);
    EXPECT_EQ(row.ModelName, "Unknown");
  }
  row.Version = 9;
  ReadDeviceState(1);
  EXPECT_EQ(row.Version, 9) << "only a running device tells its version";
}

TEST_F(Devices, NameTheirModelsByClass) {
  const std::tuple<std::int32_t, std::int32_t, const char*> kCases[] = {
      {0, 1, "Vendral Kest"},      {0, 10, "Unknown"}, {0, 15, "NQT"},
      {0, 16, "Unknown"},          {0, -1, "Unknown"}, {1, 0, "Unknown"},
      {1, 1, "Focuser Accessory"}, {2, 1, "Unknown"}};
  for (const auto& [deviceClass, model, name] : kCases) {
    gDeviceClass = deviceClass, mount.model = model;
    RefreshDevice(1);
    EXPECT_EQ(row.ModelName, name) << deviceClass << " " << model;
    EXPECT_EQ(row.Model, model);
  }
  for (const std::int32_t result : {0x70001, -65535, 0, 2, 0x10000, -1}) {
    mount.modelResult = result;
    EXPECT_EQ(ReadModelNumber(0x10010, row.Model), result == 0x70001 || result == -65535) << result;
  }
}

TEST_F(Devices, TrustAnOldBootLoaderForNoRevisionFiveOrSix) {
  const std::array<std::int32_t, 5> kCases[] = {
      {7, 9, 9, 9, 7}, {5, 6, 5, 0, 6}, {5, 0, 5, 1, 0}, {5, 0, 5, 2, 5}, {6, 0, 6, 0, 0}};
  for (const auto& [now, running, boot, version, effective] : kCases) {
    row = {0, 16, "", 0, "", McState::BootMode, "", 0, boot, running, now, version};
    EXPECT_EQ(EffectiveHwRev(1), effective) << now << running << boot << version;
  }
  std::string byModel = FormatHwRev(12, 1);
  for (row.Model = 0; row.Model < 8; ++row.Model) byModel += " " + FormatHwRev(0, 1);
  EXPECT_EQ(byModel, "12 Unknown 1 Unknown 1 Unknown 2 2 Unknown");
}

TEST_F(Devices, AreReportedLineByLine) {
  program::Set({"/opt/mount", "Tarnwick", 2, 2, 4});
  mount = {1, 3, 10, 10, 1, 4, 1, 0, 1, 2, 0, {}};
  link.devices[17] = {2, 0, 0, 5, 1, 0, 1, 5, 1, 1, 0, {}};
  RefreshDevices();
  link.TakeCalls();
  SetupDevices(2), SetupDevices(-1);
  const std::string tail = "EXE Version: 2.2.4\r\nDLL Version: 1.2.3\r\n";
  EXPECT_EQ(BuildStatusReport(),
            "Device: AZM(RA) Motor\r\n    State: Running\r\n    Model: Unknown\r\n    Address: 16\r\n"
            "    Version: 3.10\r\n    HwRev: 4\r\n\r\n"
            "Device: ALT(DEC) Motor\r\n    State: Boot Mode\r\n    Model: Unknown\r\n    Address: 17\r\n"
            "    Version: Unknown\r\n    HwRev: Unknown\r\n\r\n" +
                tail);
  EXPECT_EQ(link.TakeCalls(), "getDllVersion;");
  SetupDevices(1);
  EXPECT_EQ(std::tuple(gDevices[1].Address, gDevices[1].Name), std::tuple(18, "Focuser Motor"));
  EXPECT_EQ(std::tuple(gDevices[2].Address, gDevices[2].Name), std::tuple(19, "FDR Motor"));
  gComPort.clear();
  EXPECT_EQ(BuildStatusReport(), "No COM port specified!\r\n\r\n" + tail);
}

}  // namespace
}  // namespace tarnwick
