#include "ports/ports.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace tarnwick::ports {
namespace {

TEST(Ports, AreTheEntriesBesideTheProgramOrElseThoseOfTheTable) {
  const test::TempFolder folder;
  const std::filesystem::path entries = folder / "ports";
  std::filesystem::create_directory(entries);
  std::filesystem::create_symlink("/dev/null", entries / "COM7");
  std::filesystem::create_symlink("/no/such/device", entries / "com8");
  test::WriteFile(entries / "COM9", "no device");
  const std::pair<const char*, std::string> cases[] = {
      {"COM1", "/dev/ttyS0"},     {"COM4", "/dev/ttyS3"},    {"COM5", "/dev/ttyUSB0"},
      {"com10", "/dev/ttyUSB5"},  {"COM11", "/dev/ttyACM0"}, {"Com16", "/dev/ttyACM5"},
      {"com7", entries / "COM7"}, {"COM8", entries / "com8"}};
  for (const auto& [name, device] : cases) EXPECT_EQ(DeviceOf(folder.Path(), name), device) << name;
  for (const char* name : {"", "COM", "COM0", "COM17", "COM01", "LPT1", "../COM1", "None"})
    EXPECT_EQ(DeviceOf(folder.Path(), name), std::nullopt) << name;
  EXPECT_TRUE(PortExists(folder.Path(), "COM7"));
  for (const char* name : {"COM8", "COM9"}) EXPECT_FALSE(PortExists(folder.Path(), name)) << name;
}

}  // namespace
}  // namespace tarnwick::ports
