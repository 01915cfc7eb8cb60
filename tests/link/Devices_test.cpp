#include "link/Devices.h"

#include <gtest/gtest.h>

#include "settings/Settings.h"
#include "platform/program.h"
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

TEST_F(Devices, AreRefreshedAsTheirStateAllows) {
  const struct {
    std::int32_t state, app, appResult, boot, bootResult, versionResult;  // What the device answers.
    const char* calls;  // Those behind the one for its state.
    // State and name, version, revision now, running and in boot mode, boot version; 7, 8 and 9 before.
    std::tuple<std::int32_t, std::string, double, std::int32_t, std::int32_t, std::int32_t, std::int32_t> row;
  } kCases[] = {
      {0, 4, 1, 6, 1, 0, "", {0, "No Response", 0, 0, 8, 9, 0}},
      {1, 6, 1, 6, 1, 0, "getHwRev 16;getModel 16;", {1, "Running", 4.25, 6, 6, 9, 0}},
      {1, 5, 0, 6, 1, 0, "getHwRev 16;getModel 16;", {1, "Running", 4.25, 0, 5, 9, 0}},
      {2, 4, 1, 6, 7, 0, "getHwRevFromBoot 16;getVersionFromBoot 16;", {2, "Boot Mode", 0, 6, 8, 6, 2}},
      {3, 4, 1, 5, 1, 1, "getHwRevFromBoot 16;getVersionFromBoot 16;", {3, "Program", 0, 5, 8, 5, 0}},
      {3, 4, 1, 6, 0, 0, "getHwRevFromBoot 16;", {3, "Program", 0, 0, 8, 6, 0}},
      {3, 4, 1, 7, 1, 0, "getHwRevFromBoot 16;", {3, "Program", 0, 7, 8, 7, 0}},
      {4, 4, 1, 6, 1, 0, "", {-1, "Unknown", 0, 0, 8, 9, 0}}};
  for (const auto& c : kCases) {
    mount = {c.state, 4, 25, 5, 0, c.app, c.appResult, c.boot, c.bootResult, 2, c.versionResult, {}};
    row = {0, 16, "", 7, "", McState::Unknown, "", 7, 9, 8, 7, 7};
    RefreshDevice(1);
    EXPECT_EQ(std::tuple(static_cast<std::int32_t>(row.State), row.StateName, row.Version, row.HwRev,
                         row.HwRevApp, row.HwRevBoot, row.BootVersion),
              c.row);
    EXPECT_EQ(link.TakeCalls(), std::string("getMcState 16;") + c.calls);
    EXPECT_EQ(std::to_string(row.Model) + row.ModelName, "0Unknown");
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
