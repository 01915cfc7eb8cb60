#include "settings/INIfile.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <csignal>

#include "support/ReadOnlyFolder.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using test::ReadFile;
using test::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;

class Document : public testing::Test {
 protected:
  /// The lines as "group|section|value".
  std::vector<std::string> Lines() {
    std::vector<std::string> shown;
    for (const auto& line : ini.INIlines()->NewEnum()) {
      shown.push_back(line->Group + "|" + line->Section + "|" + line->Value);
    }
    return shown;
  }
  std::vector<std::string> Loaded(std::string_view content) {
    WriteFile(file, content);
    ini.LoadFile(file);
    return Lines();
  }
  /// What is written for one line.
  std::string Saved(std::string_view group, std::string_view section, std::string_view value) {
    ini.INIlines()->Clear();
    ini.INIlines()->Add(group, section, value);
    ini.SaveFile(file);
    return ReadFile(file);
  }

  test::TempFolder folder;
  fs::path file = folder / "Tarnwick.ini";
  INIfile ini;
};

TEST_F(Document, LoadsEachKindOfLine) {
  const std::pair<const char*, std::vector<std::string>> kCases[] = {
      {"\r\n  \t \r\n", {}},
      {"[Group] ; Note\r\n", {"[GROUP] ; NOTE|[GROUP] ; NOTE|"}},
      {"\t[a=b]\t\r\n", {"[A=B]|[A=B]|"}},
      {"key = Value\r\n", {"|KEY|Value"}},
      {"[g]\r\n  k e y\t=\t a = B \r\nkey=\r\n", {"[G]|[G]|", "[G]|K E Y|a = B", "[G]|KEY|"}},
      {"[g]\r\nk=1\r\nk=2\r\n[h]\r\nk=3\r\n", {"[G]|[G]|", "[G]|K|1", "[G]|K|2", "[H]|[H]|", "[H]|K|3"}},
      {" = value\r\n", {}},
      {"text\r\n; comment\r\n", {}},
      {"; comment = kept\r\n", {"|; COMMENT|kept"}},
      {"\xE4=\xE4\r\n", {"|\xC4|\xE4"}},
      {"a=1\r\nlost=2", {"|A|1"}},
      {"a=1\nb=2\n", {}},
      {"a\r=\n1\r\n", {"|A|1"}},
      {"", {}},
  };
  for (const auto& [content, lines] : kCases) EXPECT_EQ(Loaded(content), lines) << content;
}

TEST_F(Document, IsEmptyWithoutAReadableFile) {
  for (const fs::path& path : {folder / "missing", folder.Path(), fs::path("/dev/zero"), fs::path()}) {
    ini.INIlines()->Add("[G]", "K", "V");
    ini.LoadFile(path);
    EXPECT_THAT(Lines(), IsEmpty()) << path;
  }
  std::string largest = "a=1\r\n" + std::string(INIfile::kLargestFile - 7, ' ') + "\r\n";
  EXPECT_THAT(Loaded(largest), ElementsAre("|A|1"));
  EXPECT_THAT(Loaded(largest + " "), IsEmpty());
}

TEST_F(Document, WritesEachKindOfLine) {
  const std::string key13 = "K234567890123";
  EXPECT_EQ(Saved("", "", ""), "\r\n");
  EXPECT_EQ(Saved(" [group] ", " ", "unwritten"), "[GROUP]\r\n");
  EXPECT_EQ(Saved("[g]", " Key ", " the value "), "   Key          = the value\r\n");
  EXPECT_EQ(Saved("[g]", "Key", "  "), "   Key          =\r\n");
  EXPECT_EQ(Saved("", key13, "1"), "   " + key13 + "= 1\r\n");
  EXPECT_EQ(Saved("", key13 + "4", "1"), "   " + key13 + "4= 1\r\n");
  ini.UcaseSection(true);
  ini.LeadingSpaces(0);
  ini.EqualPos(5);
  EXPECT_EQ(Saved("[g]", "Key", "a=B"), "KEY = a=B\r\n");
  ini.LeadingSpaces(-1);
  ini.EqualPos(INT32_MIN);
  EXPECT_EQ(Saved("[g]", "Key", "v"), "KEY= v\r\n");
  ini.INIlines()->Clear();
  ini.SaveFile(file);
  EXPECT_EQ(ReadFile(file), "");
}

TEST_F(Document, ReadsBackWhatItWrote) {
  ini.INIlines()->Add("[g]");
  ini.INIlines()->Add("[g]", "DebugFilter4", "\x80uro = 1");
  ini.INIlines()->Add("[g]", "Empty");
  ini.SaveFile(file);
  ini.LoadFile(file);
  EXPECT_THAT(Lines(), ElementsAre("[G]|[G]|", "[G]|DEBUGFILTER4|\x80uro = 1", "[G]|EMPTY|"));
}

TEST_F(Document, SharesItsLines) {
  const auto lines = ini.INIlines();
  const auto line = lines->Add("[G]", "K");
  EXPECT_EQ(lines->Item(1), line);
  line->Value = "changed";
  lines->Add("[G]", "L");
  EXPECT_THAT(Lines(), ElementsAre("[G]|K|changed", "[G]|L|"));
  lines->Remove(1);
  EXPECT_EQ(lines->Item(1)->Section, "L");
  EXPECT_EQ(lines->Clear(), 0);
  EXPECT_EQ(lines->Count(), 0);
  EXPECT_EQ(line->Value, "changed");
  const auto other = std::make_shared<INIlines>();
  ini.INIlines(other);
  EXPECT_EQ(ini.INIlines(), other);
  ini.INIlines(nullptr);
  EXPECT_EQ(ini.INIlines()->Count(), 0) << "made anew";
  for (const std::int32_t position : {0, 2, -1, INT32_MIN, INT32_MAX}) {
    EXPECT_THROW(lines->Item(position), std::out_of_range) << position;
    EXPECT_THROW(lines->Remove(position), std::out_of_range) << position;
  }
}

TEST_F(Document, LosesTheSaveNotTheFile) {
  WriteFile(file, "old");
  {
    const test::ReadOnlyFolder locked(folder.Path());
    EXPECT_EQ(Saved("[g]", "k", "v"), "old");
  }
  const fs::path inside = folder / "folder";
  fs::create_directory(inside);
  ini.SaveFile(inside);
  ini.SaveFile(folder / "missing" / "file");
  EXPECT_TRUE(fs::is_directory(inside));
  EXPECT_EQ(ReadFile(file), "old");
}

TEST_F(Document, KeepsAFileThatItCouldNotRead) {
  constexpr std::uintmax_t kSize = 100'000'000;
  WriteFile(file, "");
  fs::resize_file(file, kSize);
  EXPECT_EQ(Saved("[g]", "", ""), "[G]\r\n");
  EXPECT_EQ(fs::file_size(folder / "Tarnwick.ini.old"), kSize);
  EXPECT_EQ(Saved("[h]", "", ""), "[H]\r\n");
  EXPECT_EQ(fs::file_size(folder / "Tarnwick.ini.old"), kSize) << "a file that can be read is just replaced";
}

TEST_F(Document, IsOldOrNewWhenTheProgramIsKilledWhileSaving) {
  const std::string value(200'000, 'x');
  const std::string odd = Saved("[g]", "odd", value);
  const std::string even = Saved("[g]", "even", value);
  for (int round = 0; round < 30; ++round) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (;;) Saved("[g]", "odd", value), Saved("[g]", "even", value);
    }
    ::usleep(static_cast<useconds_t>(1000 + round * 397));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    const std::string found = ReadFile(file);
    EXPECT_TRUE(found == odd || found == even) << "torn after round " << round << ", " << found.size();
  }
}

}  // namespace
}  // namespace tarnwick
