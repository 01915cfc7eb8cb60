#include "firmware/QALclass.h"

#include <gmock/gmock.h>

#include <iomanip>
#include <sstream>

#include "firmware/BootPackages.h"
#include "platform/text.h"
#include "support/PlainReader.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;

/// "0" for a good load, else "number : message at line".
std::string Outcome(const QALclass& package) {
  if (!package.ErrorsFound()) return "0" + package.LastErrorMessage();
  return std::to_string(package.LastError()) + " : " + package.LastErrorMessage() + " at " +
         std::to_string(package.LastErrorLine());
}

/// Words as "1234" for high byte 0x12 and low byte 0x34, "*" behind a padded one, "-" for none.
std::string ImageText(const PlainDevice& device) {
  std::ostringstream text;
  text << std::hex << std::uppercase;
  for (const PlainWord& word : device.words) {
    if (word.lo && word.hi) text << ' ' << std::setw(4) << std::setfill('0') << *word.hi * 256 + *word.lo;
    text << (word.lo && word.hi ? "" : " -") << (word.padded ? "*" : "");
  }
  return text.str();
}

std::string Described(const QALclass& package) {
  const PlainPackage is = PictureOf(package);
  std::ostringstream text;
  text << '\n' << Outcome(package) << "\nFILEVER " << is.fileVersion << "\nMODELNUMBER " << is.modelNumber;
  for (const auto& [key, value] : is.texts) text << '\n' << key << ' ' << value;
  text << "\nrevisions";
  for (const std::int32_t revision : is.revisions) text << ' ' << revision;
  int number = 0;
  for (const PlainDevice& device : is.devices) {
    const auto padded =
        std::count_if(device.words.begin(), device.words.end(), [](auto& word) { return word.padded; });
    text << '\n' << ++number << ' ' << device.name << '/' << device.address << '/' << device.recordId << '/';
    text << device.version << '\n' << number << " ends at " << device.words.size() - 1 << " with " << padded;
    text << " padded\n" << number << ':' << ImageText(device);
  }
  return text.str() + '\n';
}

/// Lines of `told` that begin with "; > " tell what the load of `package` leaves. The others are returned.
std::vector<std::string> ExpectTold(const QALclass& package, const std::string& told) {
  std::vector<std::string> others;
  std::istringstream text(told);
  for (std::string line; std::getline(text, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (!line.starts_with("; > ")) {
      others.push_back(line);
    } else {
      EXPECT_THAT(Described(package), testing::HasSubstr("\n" + line.substr(4) + "\n"));
    }
  }
  return others;
}

const std::string kDevice = "DEVICE_ADDRESS_VERSION=M, 16, X1\r\n";
const std::string kBlock = "START_HEX=X1\r\n:0400000001020304F2\r\n";

TEST(QALclass, MakesOfOddCasesWhatTheyTell) {
  QALclass package;
  int files = 0;
  for (const fs::directory_entry& file : fs::directory_iterator(TARNWICK_CORPUS)) {
    SCOPED_TRACE(file.path());
    ++files;
    package.LoadQALfile(file.path());
    const std::string told = ReadFile(file.path());
    EXPECT_TRUE(told.starts_with("; > "));
    ExpectTold(package, told);
  }
  EXPECT_GT(files, 60) << "Not all of them are there.";
}

TEST(QALclass, LoadsFilesAndForgetsTheLastOne) {
  const TempFolder folder;
  const fs::path good = folder / "good.qal";
  WriteFile(good, "HWREV=5,6\r\nCOMMENTS=c\r\n" + kDevice + kBlock);
  WriteFile(folder / "empty.qal", "");
  QALclass package;
  package.LoadQALfile(good);
  package.LoadQALfile(package.RealFilename());
  ExpectTold(package, "; > 0\n; > revisions 5 6\n; > 1 ends at 3 with 2 padded\n");
  for (const fs::path& path : {folder / "missing.qal", folder.Path(), fs::path(), fs::path("/dev/zero")}) {
    package.LoadQALfile(path);
    ExpectTold(package, "; > 1 : QAL File Not Found at 0\n; > COMMENTS \n; > revisions\n");
    EXPECT_EQ(package.RealFilename(), path);
    EXPECT_EQ(package.Devices(), 0);
    EXPECT_EQ(package.HwRevValue(1), 0);
  }
  package.LoadQALfile(folder / "empty.qal");
  EXPECT_EQ(Outcome(package), "0");
  package.LoadQALfile(good, "FILENAME=t\r\n");
  ExpectTold(package, "; > FILENAME t\n; > COMMENTS \n");
  EXPECT_EQ(package.RealFilename(), good);
}

TEST(QALclass, ReadsAFileOfManyPiecesAsIfItWereOne) {
  const TempFolder folder;
  const std::string blanks(150'000, '\t'), text(150'000, 'x'), ends(150'000, '\n'), block = kDevice + kBlock;
  std::string all = block;
  for (std::size_t i = 0; all.size() < 3'000'000; i = i * 5 / 4 + 1) {
    all += "COMMENTS=" + std::string(i % 400'000, 'x') + "\r\n:02000800AABB91\r\n";
  }
  // What follows a long line shows what was made of it.
  const std::string cases[] = {
      all + "END_HEX=X2\r\n",
      blanks + "filename" + ends + "=" + blanks + "a" + text + " b\r" + blanks + "\r\n" + block,
      text + "\r\r\n" + text + "=" + text + "\r\n:" + text + "=\r\n" + block,
      "; \r\n:" + text + "\r\n" + block,
      "FILE" + blanks + "NAME=a\r\nDEVICE_ADDRESS_VERSION" + text + "=a\r\n" + block,
      blanks + "START_HEX=" + text + "\r\nEND_HEX=" + text + "\r\n" + block + blanks + "HWREV=5," + text,
  };
  QALclass package;
  for (const std::string& each : cases) {
    for (std::size_t more = 0; more < 3; ++more) {
      const std::string shifted = std::string(more, ' ') + each;
      WriteFile(folder / "long.qal", shifted);
      package.LoadQALfile(folder / "long.qal");
      EXPECT_EQ(PictureOf(package), PlainReader::Read(shifted)) << each.substr(0, 20);
    }
  }
}

/// Of the lines told, "..." stands for what a line may go on with.
TEST(BootPackages, AreAsTold) {
  const std::pair<const char*, std::string> packages[] = {
      {"jump-fix", BootJumpFixText()}, {"update-5", BootUpdateText5()}, {"update-6", BootUpdateText6()}};
  for (const auto& [name, text] : packages) {
    SCOPED_TRACE(name);
    QALclass package;
    package.LoadQALfile({}, text);
    std::string_view rest = text, line;
    for (const std::string& told : ExpectTold(package, ReadFile(fs::path(TARNWICK_BOOT) / name))) {
      ASSERT_TRUE(text::NextLine(rest, line)) << told;
      const bool open = told.ends_with("...");
      EXPECT_TRUE(open ? line.starts_with(told.substr(0, told.size() - 3)) : line == told)
          << line << " for " << told;
    }
    EXPECT_EQ(rest, "");
    EXPECT_EQ(package.RealFilename(), "");
    EXPECT_EQ(PictureOf(package).devices[0].words, PictureOf(package).devices[1].words);
  }
}

}  // namespace
}  // namespace tarnwick::test
