#include "firmware/BootPackages.h"

#include <gmock/gmock.h>

#include "PackageText.h"
#include "platform/text.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

std::vector<std::string> LinesOf(std::string_view text) {
  std::vector<std::string> lines;
  std::string_view line;
  while (text::NextLine(text, line)) lines.emplace_back(line);
  EXPECT_TRUE(text.empty()) << "every line ends in CR LF, the last included";
  return lines;
}

TEST(BootPackages, LoadAsTold) {
  const struct {
    std::string text;
    double fileVersion;
    std::int32_t model;
    std::int32_t revisions;
    std::int32_t revision;
    std::string_view recordId;
    double version;
    std::int32_t words;
    std::int32_t padded;
    std::string_view firstWords;
  } cases[] = {
      {BootJumpFixText(), 1 / 10.0 + 1, 5, 0, 0, "BOOTJUMPFIX", 0.0, 115, 1, "120A 118A 2810"},
      {BootUpdateText5(), 2 / 10.0 + 1, 14, 1, 5, "MC2_9196", 91 + 96 / 100.0, 1599, 0, "D8FF EF00 F003"},
      {BootUpdateText6(), 2 / 10.0 + 1, 13, 1, 6, "MC2_9196", 91 + 96 / 100.0, 1599, 0, "D8FF EF00 F003"},
  };
  for (const auto& c : cases) {
    const QALclass package = Loaded(c.text);
    ASSERT_EQ(Outcome(package), "0");
    EXPECT_EQ(package.FileVersion(), c.fileVersion);
    EXPECT_EQ(package.ModelNumber(), c.model);
    EXPECT_EQ(package.HwRevCount(), c.revisions);
    EXPECT_EQ(package.HwRevValue(1), c.revision);
    EXPECT_EQ(package.RealFilename(), "");
    ASSERT_EQ(package.Devices(), 2);
    EXPECT_EQ(package.DeviceName(1) + "/" + package.DeviceName(2), "AZM MOTOR/ALT MOTOR");
    for (std::int32_t device = 1; device <= 2; ++device) {
      EXPECT_EQ(package.DeviceAddress(device), 15 + device);
      EXPECT_EQ(package.DeviceRecordID(device), c.recordId);
      EXPECT_EQ(package.DeviceVersion(device), c.version);
      EXPECT_EQ(package.DeviceWords(device), c.words);
      EXPECT_EQ(ImageText(package, device).substr(0, 14), c.firstWords);
      std::int32_t padded = 0;
      for (std::int32_t word = 0; word <= c.words; ++word) padded += package.DeviceNullPadded(device, word);
      EXPECT_EQ(padded, c.padded);
    }
    EXPECT_EQ(ImageText(package, 1), ImageText(package, 2));
  }
}

TEST(BootPackages, JumpFixHasItsShape) {
  const std::vector<std::string> lines = LinesOf(BootJumpFixText());
  ASSERT_EQ(lines.size(), 29u);
  EXPECT_THAT(
      std::vector(lines.begin(), lines.begin() + 13),
      ElementsAre(";", "; halcyrion firmware download format: version 1.1", ";", "FILEVER=11",
                  "FILENAME=bootjumpfix.qal", "FILEDATE=2004.12.01", "COMMENTS=bootjumpfix", "MODELNUMBER=5",
                  "MODELNAME=CORVANE", "DEVICE_ADDRESS_VERSION=AZM MOTOR, 16, bootjumpfix",
                  "DEVICE_ADDRESS_VERSION=ALT MOTOR, 17, bootjumpfix", "START_HEX=bootjumpfix",
                  ":100000000A128A1110280000000000000000000001"));
  EXPECT_THAT(std::vector(lines.end() - 3, lines.end()),
              ElementsAre(":0600E0000A168A15002F2C", ":00000001FF", "END_HEX=bootjumpfix"));
  for (std::size_t i = 0; i < 14; ++i) {
    char head[16];
    std::snprintf(head, sizeof head, ":10%04X00", static_cast<unsigned>(i * 16));
    EXPECT_TRUE(lines[12 + i].starts_with(head)) << lines[12 + i];
  }
  const QALclass package = Loaded(BootJumpFixText());
  EXPECT_EQ(WordText(package, 1, 114), "2F00");
  EXPECT_EQ(WordText(package, 1, 115), "3FFF*");
  for (std::int32_t word = 0; word < 115; ++word) EXPECT_LE(*package.DeviceHiByte(1, word), 0x3F) << word;
}

TEST(BootPackages, UpdatesHaveTheirShape) {
  const std::vector<std::string> five = LinesOf(BootUpdateText5());
  ASSERT_EQ(five.size(), 214u);
  EXPECT_THAT(std::vector(five.begin(), five.begin() + 14),
              ElementsAre(";", "; halcyrion firmware download format: version 1.2", ";", "FILEVER=12",
                          "FILENAME=BootUpdate_9196.qal", "FILEDATE=2009.07.07",
                          "COMMENTS=Bootloader Updater 9196", "MODELNUMBER=14", "MODELNAME=CORVANEM",
                          "HWREV=5", "DEVICE_ADDRESS_VERSION=AZM MOTOR, 16, MC2_9196",
                          "DEVICE_ADDRESS_VERSION=ALT MOTOR, 17, MC2_9196", "START_HEX=MC2_9196",
                          ":10000000FFD800EF03F0FFFFFFFFFFFFFFFFFFFF41"));
  EXPECT_EQ(five[14], ":10001000FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF0");
  EXPECT_EQ(five[212], ":100C7000F59C0C00DFDFFF00FFFFFFFFFFFFFFFF22");
  EXPECT_EQ(five[213], "END_HEX=MC2_9196");
  int blank = 0;
  for (std::size_t i = 0; i < 200; ++i) {
    char head[16];
    std::snprintf(head, sizeof head, ":10%04X00", static_cast<unsigned>(i * 16));
    EXPECT_TRUE(five[13 + i].starts_with(head)) << five[13 + i];
    blank += five[13 + i].find(std::string(32, 'F')) == 9;
  }
  EXPECT_EQ(blank, 116);
  EXPECT_EQ(WordText(Loaded(BootUpdateText5()), 1, 8), "FFFF") << "from the file, not padded";

  std::vector<std::string> six = five;
  six[7] = "MODELNUMBER=13";
  six[8] = "MODELNAME=CORVANEPRO";
  six[9] = "HWREV=6";
  const std::vector<std::pair<std::string, std::string>> records = {
      {":100680005AD80451FE08D8B423D004518508050E69", ":100680005AD80451FE08D8B423D004518508060E68"},
      {":10087000A6B2FED71200010EA86EFF0EF5DF050E20", ":10087000A6B2FED71200010EA86EFF0EF5DF060E1F"},
      {":10088000A86EFD0EF1DF140EA86EFE0EEDDF300E29", ":10088000A86EFD0EF1DF130EA86EFE0EEDDF300E2A"},
  };
  for (const auto& [ofFive, ofSix] : records) {
    const auto at = std::find(six.begin(), six.end(), ofFive);
    ASSERT_NE(at, six.end()) << ofFive;
    *at = ofSix;
  }
  EXPECT_THAT(LinesOf(BootUpdateText6()), ElementsAreArray(six));
}

}  // namespace
}  // namespace tarnwick::test
