// The sample packages hold what the simulated mount and the guide promise of them.
#include <gmock/gmock.h>

#include <filesystem>
#include <set>

#include "PackageText.h"

namespace tarnwick::test {
namespace {

TEST(Samples, FitTheSimulatedMount) {
  const struct {
    const char* path;
    std::int32_t model;
    std::string_view hwRev;
    std::vector<std::int32_t> addresses;
    double version;
    std::int32_t words;
    std::int32_t highestByte;
    bool note;
  } cases[] = {
      {"MotorControllers/MC_0512.qal", 5, "", {16, 17}, 5 + 12 / 100.0, 1023, 0x3F, false},
      {"MotorControllers/MC_0512_AZM.qal", 5, "", {16}, 5 + 12 / 100.0, 299, 0x3F, false},
      {"MotorControllers/MCM_0730.qal", 14, "5", {16, 17}, 7 + 30 / 100.0, 599, 0xFF, true},
      {"MotorControllers/MCPRO_0731.qal", 13, "6", {16, 17}, 7 + 31 / 100.0, 599, 0xFF, false},
      {"Accessories/FOCUS_0104.qal", 1, "", {18, 19}, 1 + 4 / 100.0, 299, 0x3F, false},
  };
  for (const auto& c : cases) {
    std::filesystem::path path = std::filesystem::path(TARNWICK_PORTABLE) / c.path;
    QALclass package;
    package.LoadQALfile(path);
    ASSERT_EQ(Outcome(package), "0") << path;
    EXPECT_EQ(package.FileVersion(), (c.hwRev.empty() ? 1 : 2) / 10.0 + 1);
    EXPECT_EQ(package.Filename(), path.filename().string());
    EXPECT_EQ(package.ModelNumber(), c.model);
    EXPECT_EQ(package.HwRev(), c.hwRev);
    EXPECT_EQ(std::filesystem::exists(path.replace_extension(".txt")), c.note);
    ASSERT_EQ(package.Devices(), static_cast<std::int32_t>(c.addresses.size()));
    for (std::int32_t device = 1; device <= package.Devices(); ++device) {
      EXPECT_EQ(package.DeviceAddress(device), c.addresses[static_cast<std::size_t>(device - 1)]);
      EXPECT_EQ(package.DeviceVersion(device), c.version);
      EXPECT_EQ(package.DeviceWords(device), c.words);
      EXPECT_EQ(WordText(package, device, 8) + WordText(package, device, 9), "1A5A25A5");
      EXPECT_EQ(*package.DeviceLoByte(device, 10) + *package.DeviceLoByte(device, 11) / 100.0, c.version);
      EXPECT_EQ(WordText(package, device, 160), "3FFF*") << "the gap";
      EXPECT_EQ(WordText(package, device, 176).size(), 4u);
      for (std::int32_t word = 0; word <= c.words; ++word) {
        ASSERT_LE(*package.DeviceHiByte(device, word), c.highestByte) << path << " " << word;
      }
      const std::string head = ImageText(package, device).substr(0, 14);
      EXPECT_TRUE(head != "120A 118A 2810" && head != "D8FF EF00 F003") << "a boot package's first words";
    }
  }
  QALclass damaged;
  damaged.LoadQALfile(std::filesystem::path(TARNWICK_PORTABLE) / "MotorControllers/MC_0513_DAMAGED.qal");
  EXPECT_EQ(Outcome(damaged), "4 : Hex Line CheckSum Error at 33");
}

}  // namespace
}  // namespace tarnwick::test
