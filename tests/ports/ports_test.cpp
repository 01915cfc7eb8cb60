#include "ports/ports.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace tarnwick::ports {
namespace {

namespace fs = std::filesystem;

TEST(Ports, MapTheirNamesByTheTable) {
  const test::TempFolder folder;
  const std::pair<const char*, const char*> cases[] = {{"COM1", "/dev/ttyS0"},    {"COM4", "/dev/ttyS3"},
                                                       {"COM5", "/dev/ttyUSB0"},  {"com10", "/dev/ttyUSB5"},
                                                       {"COM11", "/dev/ttyACM0"}, {"Com16", "/dev/ttyACM5"}};
  for (const auto& [name, device] : cases) EXPECT_EQ(DeviceOf(folder.Path(), name), device) << name;
  for (const char* name : {"", "COM", "COM0", "COM17", "COM01", "LPT1", "../COM1", "None"})
    EXPECT_EQ(DeviceOf(folder.Path(), name), std::nullopt) << name;
}

TEST(Ports, PreferTheEntriesBesideTheProgram) {
  const test::TempFolder folder;
  const fs::path entries = folder / "ports";
  fs::create_directory(entries);
  fs::create_symlink("/dev/null", entries / "COM5");
  fs::create_symlink("/no/such/device", entries / "com6");
  test::WriteFile(entries / "COM7", "no device");
  EXPECT_EQ(DeviceOf(folder.Path(), "com5"), entries / "COM5");
  EXPECT_EQ(DeviceOf(folder.Path(), "COM6"), entries / "com6");
  EXPECT_TRUE(PortExists(folder.Path(), "COM5"));
  EXPECT_FALSE(PortExists(folder.Path(), "COM6"));
  EXPECT_FALSE(PortExists(folder.Path(), "COM7"));
}

}  // namespace
}  // namespace tarnwick::ports
