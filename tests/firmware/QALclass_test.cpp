#include "firmware/QALclass.h"

#include <gmock/gmock.h>

#include "PackageText.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

constexpr std::string_view kDevice = "DEVICE_ADDRESS_VERSION=M, 16, X1";
constexpr std::string_view kStart = "START_HEX=X1";
constexpr std::string_view kEnd = "END_HEX=X1";
/// Words 0 and 1: 0x0201, 0x0403. Word 4: 0xBBAA.
constexpr std::string_view kTwoWords = ":0400000001020304F2";
constexpr std::string_view kWordFour = ":02000800AABB91";

TEST(QALclass, ReadsTheHeader) {
  const QALclass package =
      Loaded({";", "; COMMENTS=no", "junk", "", "FILEVER=12", "FILENAME=A b.qal", "FILEDATE=2009.07.07",
              "COMMENTS=x = y", "MODELNUMBER=14", "MODELNAME=First", "modelname =  Second\t",
              "HWREV= 5, 6,,x", ":is=skipped", "OTHER=1"});
  EXPECT_EQ(Outcome(package), "0");
  EXPECT_EQ(package.FileVersion(), 2 / 10.0 + 1);
  EXPECT_EQ(package.Filename(), "A b.qal");
  EXPECT_EQ(package.FileDate(), "2009.07.07");
  EXPECT_EQ(package.Comments(), "x = y");
  EXPECT_EQ(package.ModelNumber(), 14);
  EXPECT_EQ(package.ModelName(), "Second");
  EXPECT_EQ(package.HwRev(), "5, 6,,x");
  EXPECT_EQ(package.HwRevCount(), 4);
  const std::int32_t revisions[] = {0, 5, 6, 0, 0, 0};
  for (std::int32_t i = 0; i <= 5; ++i) EXPECT_EQ(package.HwRevValue(i), revisions[i]) << i;
  EXPECT_EQ(package.HwRevValue(-1), 0);
  EXPECT_EQ(package.Devices(), 0);
}

TEST(QALclass, ReadsNumbersByTheirPrefix) {
  const struct {
    std::string_view line;
    double fileVersion;
    std::int32_t model;
  } cases[] = {
      {"FILEVER=12", 1.2, 0},
      {"FILEVER=1.2", 1.0, 0},
      {"FILEVER=123", 1.2, 0},
      {"FILEVER=1", 1.0, 0},
      {"FILEVER=", 0.0, 0},
      {"FILEVER=x7", 0.7, 0},
      {"  filever = 12  ", 1.2, 0},
      {"\tFileVer\t=\t12", 1.2, 0},
      {"; FILEVER=12", 0.0, 0},
      {"FILEVER 12", 0.0, 0},
      {"MODELNUMBER=5", 0.0, 5},
      {"MODELNUMBER=", 0.0, 0},
      {"MODELNUMBER=12abc", 0.0, 12},
      {"MODELNUMBER=abc", 0.0, 0},
      {"MODELNUMBER=-3", 0.0, -3},
      {"MODELNUMBER=2.5", 0.0, 2},
      {"MODELNUMBER=3.5", 0.0, 4},
      {"MODELNUMBER=1e3", 0.0, 1},
      {"MODELNUMBER=0x10", 0.0, 0},
      {"MODELNUMBER=inf", 0.0, 0},
      {"MODELNUMBER=9999999999", 0.0, INT32_MAX},
      {"MODELNUMBER=-99999999999999999999999", 0.0, INT32_MIN},
  };
  for (const auto& c : cases) {
    const QALclass package = Loaded({c.line});
    EXPECT_DOUBLE_EQ(package.FileVersion(), c.fileVersion) << c.line;
    EXPECT_EQ(package.ModelNumber(), c.model) << c.line;
    EXPECT_EQ(Outcome(package), "0") << c.line;
  }
  EXPECT_DOUBLE_EQ(Loaded({"FILEVER=11", "FILEVER="}).FileVersion(), 1.1) << "an empty value changes nothing";
  EXPECT_EQ(Loaded({"HWREV=5", "HWREV="}).HwRevCount(), 0);
}

TEST(QALclass, ReadsDeviceLines) {
  const struct {
    std::string_view value;
    std::string_view name;
    std::int32_t address;
    std::string_view recordId;
    double version;
  } cases[] = {
      {"AZM MOTOR, 16, MC2_9196", "AZM MOTOR", 16, "MC2_9196", 91 + 96 / 100.0},
      {"Alt , 17 ,bootjumpfix", "Alt", 17, "BOOTJUMPFIX", 0.0},
      {"AZM MOTOR, 16", "AZM MOTOR", 16, "", 0.0},
      {"", "", 0, "", 0.0},
      {",,,,", "", 0, "", 0.0},
      {"a, 1.5, x0407, rest, more", "a", 2, "X0407", 4 + 7 / 100.0},
      {"a, 1, x0407 , cut behind the version", "a", 1, "X0407", 40 + 7 / 100.0},
      {"a, x, 7", "a", 0, "7", 7 + 7 / 100.0},
      {"a, 1,123", "a", 1, "123", 12 + 23 / 100.0},
      {"\xE4, 1, \xE4x04", "\xE4", 1, "\xC4X04", 0 + 4 / 100.0},
  };
  for (const auto& c : cases) {
    const QALclass package = Loaded({"DEVICE_ADDRESS_VERSION=" + std::string(c.value)});
    ASSERT_EQ(package.Devices(), 1) << c.value;
    EXPECT_EQ(package.DeviceName(1), c.name) << c.value;
    EXPECT_EQ(package.DeviceAddress(1), c.address) << c.value;
    EXPECT_EQ(package.DeviceRecordID(1), c.recordId) << c.value;
    EXPECT_EQ(package.DeviceVersion(1), c.version) << c.value;
    EXPECT_EQ(Outcome(package), "7 : No Data Found For Device at 1") << c.value;
  }
}

TEST(QALclass, MapsRecordsOntoWords) {
  const struct {
    const char* what;
    std::vector<std::string_view> records;
    std::string_view image;
  } cases[] = {
      {"low byte first, tail padded", {kTwoWords}, "0201 0403 3FFF* 3FFF*"},
      {"lower-case digits", {":020002001a2bb7"}, "3FFF* 2B1A 3FFF* 3FFF*"},
      {"an odd address loses its lowest bit", {":020003001A2BB6"}, "3FFF* 2B1A 3FFF* 3FFF*"},
      {"an odd last byte is not stored",
       {":050000000102030499"
        "58"},
       "0201 0403 3FFF* 3FFF*"},
      {"a single byte stores nothing",
       {kTwoWords,
        ":0100100055"
        "9A"},
       "0201 0403 3FFF* 3FFF*"},
      {"no bytes at all are fine",
       {":0000100"
        "0F0",
        kTwoWords},
       "0201 0403 3FFF* 3FFF*"},
      {"a later record overwrites", {kTwoWords, ":02000200FFEE0F"}, "0201 EEFF 3FFF* 3FFF*"},
      {"any order, gaps padded, a whole group too",
       {":020018001122B3", kWordFour, kTwoWords},
       "0201 0403 3FFF* 3FFF* BBAA 3FFF* 3FFF* 3FFF* 3FFF* 3FFF* 3FFF* 3FFF* 2211 3FFF* 3FFF* 3FFF*"},
      {"a filler word in the file is not padded", {":08000000FF3FFF3FFF3FFF3F00"}, "3FFF 3FFF 3FFF 3FFF"},
      {"the end-of-file record ends nothing",
       {":00000001FF", kTwoWords, ":00000001FF"},
       "0201 0403 3FFF* 3FFF*"},
      {"a hex line behind a blank is skipped", {kTwoWords, " :0200020099999999"}, "0201 0403 3FFF* 3FFF*"},
      {"a second block of the same id",
       {kTwoWords, kEnd, kWordFour, "start_hex= x1 ", ":020002000500F7"},
       "0201 0005 3FFF* 3FFF*"},
      {"the other kind of block, mixed",
       {"V3_START_HEX=x1", kTwoWords, "END_HEX=X1", "V3_START_HEX=X1"},
       "0201 0403 3FFF* 3FFF*"},
      {"another id in between is dropped",
       {kTwoWords, "START_HEX=X2", kWordFour, "V3_END_HEX=x2", kStart},
       "0201 0403 3FFF* 3FFF*"},
  };
  for (const auto& c : cases) {
    std::string text = Lines({kDevice, kStart});
    for (const std::string_view record : c.records) text.append(record).append("\r\n");
    const QALclass package = Loaded(text + Lines({kEnd}));
    ASSERT_EQ(Outcome(package), "0") << c.what;
    EXPECT_EQ(ImageText(package, 1), c.image) << c.what;
  }
}

TEST(QALclass, ReachesTheLastWord) {
  std::string line = ":FFFFFE00";
  for (int i = 0; i < 255; ++i) line += "01";
  const QALclass package = Loaded({kDevice, kStart, line + "05"});
  EXPECT_EQ(Outcome(package), "0");
  EXPECT_EQ(package.DeviceWords(1), 0x7FFF + 126 + 2) << "127 words, rounded up to a whole group";
  EXPECT_EQ(WordText(package, 1, 0x7FFF + 126), "0101");
  EXPECT_EQ(WordText(package, 1, 0x7FFE), "3FFF*");
}

TEST(QALclass, GivesADeviceTheRecordsBelowIt) {
  const QALclass package =
      Loaded({"DEVICE_ADDRESS_VERSION=a, 1, x1", "DEVICE_ADDRESS_VERSION=other, 2, Y", kStart, kTwoWords,
              kWordFour, "DEVICE_ADDRESS_VERSION=late, 3, X1", ":020002001A2BB7", kEnd, "START_HEX=y",
              kTwoWords, "END_HEX=Y", "DEVICE_ADDRESS_VERSION=no id, 4", kTwoWords});
  EXPECT_EQ(Outcome(package), "0");
  ASSERT_EQ(package.Devices(), 4);
  EXPECT_EQ(ImageText(package, 1), "0201 2B1A 3FFF* 3FFF* BBAA 3FFF* 3FFF* 3FFF*");
  EXPECT_EQ(ImageText(package, 2), "0201 0403 3FFF* 3FFF*");
  EXPECT_EQ(ImageText(package, 3), "3FFF* 2B1A 3FFF* 3FFF*");
  EXPECT_EQ(ImageText(package, 4), "0201 0403 3FFF* 3FFF*") << "outside any block the empty id is open";
}

TEST(QALclass, KeepsWrittenDeviceFieldsApart) {
  QALclass package = Loaded({kDevice, kDevice, kStart, kTwoWords});
  package.DeviceName(1, "new");
  package.DeviceAddress(1, 99);
  package.DeviceVersion(1, 3.5);
  EXPECT_EQ(package.DeviceName(1) + package.DeviceName(2), "newM");
  EXPECT_EQ(package.DeviceAddress(1) + package.DeviceAddress(2), 99 + 16);
  EXPECT_EQ(package.DeviceVersion(1) + package.DeviceVersion(2), 3.5);
  EXPECT_EQ(ImageText(package, 1), ImageText(package, 2));
}

TEST(QALclass, ReportsTheFirstFailureWithItsLine) {
  const struct {
    std::string_view line;
    std::string_view outcome;
  } cases[] = {
      {":0000000", "2 : Hex Line Too Short at 5"},
      {":", "2 : Hex Line Too Short at 5"},
      {":ZZ", "2 : Hex Line Too Short at 5"},
      {":0400000001020304F2 ", "3 : Hex Line Wrong Length at 5"},
      {":0400000001020304F20", "3 : Hex Line Wrong Length at 5"},
      {":0500000001020304F1", "3 : Hex Line Wrong Length at 5"},
      {":0G00000001020304F2", "3 : Hex Line Wrong Length at 5"},
      {":0400000001020304F3", "4 : Hex Line CheckSum Error at 5"},
      {":04000000010203G4F2", "6 : Hex Line Invalid Character at 5"},
      {":040000000102030GF2", "4 : Hex Line CheckSum Error at 5"},
      {":0400000001020G04F5", "6 : Hex Line Invalid Character at 5"},
      {":040000050102030GF1", "6 : Hex Line Invalid Character at 5"},
      {":04000G0001020304F2", "6 : Hex Line Invalid Character at 5"},
      {":0G000000"
       "00",
       "6 : Hex Line Invalid Character at 5"},
      {":04000000010203\xB2"
       "4F2",
       "6 : Hex Line Invalid Character at 5"},
      {":0400000501020304ED", "5 : Hex Line Invalid Type at 5"},
      {":020000040000FA", "5 : Hex Line Invalid Type at 5"},
      {":00000002FE", "5 : Hex Line Invalid Type at 5"},
      {"END_HEX=X2", "8 : No Matching END_HEX Found at 5"},
      {"V3_END_HEX=", "8 : No Matching END_HEX Found at 5"},
      {":END_HEX=X2", "0"},
      {":00000=00FF", "0"},
  };
  for (const auto& c : cases) {
    const bool skipped = c.outcome == "0";
    const QALclass package =
        Loaded({"; a comment", "", kDevice, kStart, c.line, kTwoWords, "FILENAME=below", "END_HEX=X9"});
    EXPECT_EQ(Outcome(package), skipped ? "8 : No Matching END_HEX Found at 8" : c.outcome) << c.line;
    EXPECT_EQ(package.Filename(), skipped ? "below" : "") << c.line;
  }
}

TEST(QALclass, WantsDataForEachDevice) {
  const struct {
    std::vector<std::string_view> lines;
    std::string_view outcome;
  } cases[] = {
      {{kDevice}, "7 : No Data Found For Device at 1"},
      {{kDevice, kStart, ":020000001A2BB9"}, "7 : No Data Found For Device at 3"},
      {{kStart, kTwoWords, kEnd, kDevice, "; end"}, "7 : No Data Found For Device at 5"},
      {{kDevice, "DEVICE_ADDRESS_VERSION=M, 17, X3", kStart, kTwoWords}, "7 : No Data Found For Device at 4"},
      {{kStart, kTwoWords}, "0"},
      {{"END_HEX="}, "0"},
      {{"END_HEX=x"}, "8 : No Matching END_HEX Found at 1"},
      {{kDevice, kStart, kTwoWords, "END_HEX=X1", kEnd}, "8 : No Matching END_HEX Found at 5"},
  };
  for (const auto& c : cases) {
    std::string text;
    for (const std::string_view line : c.lines) text.append(line).append("\r\n");
    EXPECT_EQ(Outcome(Loaded(text)), c.outcome) << text;
  }
}

TEST(QALclass, LeavesAPartialImageUnpadded) {
  const QALclass package = Loaded({kDevice, kStart, kTwoWords, kWordFour, ":"});
  EXPECT_EQ(package.DeviceWords(1), 4);
  EXPECT_EQ(ImageText(package, 1), "0201 0403 - - BBAA");
  EXPECT_EQ(WordText(Loaded({kDevice}), 1, 0), "-");
}

TEST(QALclass, EndsLinesAtCrLfAlone) {
  const std::string good = Lines({kDevice, kStart, kTwoWords});
  EXPECT_EQ(Outcome(Loaded(good + "END_HEX=wrong")), "0") << "text behind the last line end is no line";
  EXPECT_EQ(Outcome(Loaded(good + "END_HEX=wrong\r\n")), "8 : No Matching END_HEX Found at 4");
  const QALclass unixText = Loaded("DEVICE_ADDRESS_VERSION=M, 16, X1\nSTART_HEX=X1\n:bad\n");
  EXPECT_EQ(Outcome(unixText), "0");
  EXPECT_EQ(unixText.Devices(), 0);
  EXPECT_EQ(Loaded("COMMENTS=a\rb\nc\r\r\n").Comments(), "a b c");
}

TEST(QALclass, LoadsFilesAndForgetsTheLastOne) {
  const TempFolder folder;
  const auto good = folder / "good.qal";
  WriteFile(good, Lines({"HWREV=5,6", "COMMENTS=c", kDevice, kStart, kTwoWords}));
  WriteFile(folder / "empty.qal", "");
  QALclass package;
  package.LoadQALfile(good);
  EXPECT_EQ(Outcome(package), "0");
  EXPECT_EQ(package.RealFilename(), good);
  EXPECT_EQ(package.HwRevCount(), 2);
  package.LoadQALfile(package.RealFilename());
  EXPECT_EQ(package.Devices(), 1) << "its own path, loaded again";

  for (const auto& path : {folder / "missing.qal", folder.Path(), std::filesystem::path()}) {
    package.LoadQALfile(path);
    EXPECT_EQ(Outcome(package), "1 : QAL File Not Found at 0") << path;
    EXPECT_EQ(package.RealFilename(), path);
    EXPECT_EQ(package.Devices() + package.HwRevCount(), 0);
    EXPECT_EQ(package.Comments(), "");
  }
  package.LoadQALfile(folder / "empty.qal");
  EXPECT_EQ(Outcome(package), "0");
  package.LoadQALfile(good, Lines({"FILENAME=t"}));
  EXPECT_EQ(package.Filename(), "t") << "the text wins over the file";
  EXPECT_EQ(package.RealFilename(), good);
  EXPECT_EQ(package.Devices(), 0);
}

TEST(QALclass, ReadsHexadecimalNumbers) {
  QALclass package;
  EXPECT_EQ(package.HexToLong(""), 0);
  EXPECT_EQ(package.HexToLong("1aF"), 0x1AF);
  EXPECT_EQ(package.HexToLong("FFFFFFFF"), -1);
  EXPECT_FALSE(package.ErrorsFound());
  EXPECT_EQ(package.HexToLong("1x2"), 0x102);
  EXPECT_EQ(Outcome(package), "6 : Hex Line Invalid Character at 0");
}

}  // namespace
}  // namespace tarnwick::test
