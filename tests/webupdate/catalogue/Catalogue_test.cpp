// The catalogue: what is read, what is not believed, what the folder adds, and dates in all time zones.
#include "webupdate/Catalogue.h"

#include <gmock/gmock.h>

#include "platform/files.h"
#include "support/TempFolder.h"
#include "webupdate/HarmlessName.h"
#include "webupdate/Touch.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;

/// Each package as "Name|Ext|Date|Size|Description|places", then each file of the program as "$Name|...".
std::vector<std::string> Listed(Catalogue& catalogue) {
  std::vector<std::string> listed;
  for (std::int32_t i = 1; i <= catalogue.FileCount(); ++i) {
    const FileEntry& file = catalogue.Files(i);
    listed.push_back(file.Name + "|" + file.Ext + "|" + file.Date + "|" + std::to_string(file.Size) + "|" +
                     file.Description + (file.Local ? "|L" : "|") + (file.Remote ? "R" : ""));
  }
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const ProgramEntry& program = catalogue.Programs(i);
    listed.push_back("$" + program.Name + "|" + program.Version + "|" + std::to_string(program.Size));
  }
  return listed;
}

TEST(Catalogue, ReadsWhatItBelieves) {
  const std::string mixed = "lost\r\n@a.qal,d,1\r\none\r\n%b.qal,d,2\r\nfor b\r\n$P.EXE,1.2.3,4\r\ntwo\r\n";
  const std::string longName(196, 'n');
  const std::string longLine(Catalogue::kLongestLine + 1, 'x');
  const struct {
    std::string text;
    std::int32_t deviceClass;
    std::vector<std::string> listed;
  } cases[] = {
      {"<html>captive</html>", 0, {}},
      {mixed, 0, {"a|qal|d|1|one\r\ntwo\r\n\r\n|R", "$P.EXE|1.2.3|4"}},
      {mixed, 1, {"b|qal|d|2|for b\r\ntwo\r\n\r\n|R", "$P.EXE|1.2.3|4"}},
      {mixed, 2, {"$P.EXE|1.2.3|4"}},
      {"  @ a b(1).QAL , 2005-03-01 ,  12 bytes, more \r\n  said  \r\n",
       0,
       {"a b(1)|QAL|2005-03-01|12|said\r\n\r\n|R"}},
      {"@a.qal,d,-5\n", 0, {"a|qal|d|0||R"}},
      {"@a.qal,,99999999999", 0, {"a|qal||2147483647||R"}},
      // A row that is skipped takes its description along; a broken line of a program does not.
      {"@a.qal,d,1\r\n@b.qal,d\r\nfor b", 0, {"a|qal|d|1||R"}},
      {"@a.qal,d,1\r\n$5 off\r\nfor a", 0, {"a|qal|d|1|for a\r\n|R"}},
      {"@a.qal,d,1\r\n" + longLine + "\r\nfor a", 0, {"a|qal|d|1|for a\r\n|R"}},
      {"@a.txt,d,1\r\n@.qal,d,1\r\n@qal,d,1\r\n@,d,1\r\n@../a.qal,d,1\r\n@CONxqal,d,1", 0, {}},
      {"@" + longName + ".qal,d,1\r\n@n" + longName + ".qal,d,1", 0, {longName + "|qal|d|1||R"}},
      {"@a.qal,d\n,1\r\n$../P.EXE,1,1", 0, {}},
      {"@a.qal,d,1\r\n" + std::string(Catalogue::kLongestText, ' '), 0, {}},
  };
  Catalogue catalogue;
  for (const auto& each : cases) {
    catalogue.Load(each.text, each.deviceClass);
    EXPECT_EQ(Listed(catalogue), each.listed) << each.text.substr(0, 60);
  }
  std::string many;
  while (many.size() < Catalogue::kLongestText - 20) many += "@abcde,,\r\n";
  catalogue.Load(many, 0);
  EXPECT_EQ(catalogue.FileCount(), Catalogue::kMostEntries);
}

TEST(HarmlessName, IsOneComponentOnAnySystem) {
  for (const char* const name : {"MC 0514 (beta) [2].qal", "Zo\xEB.qal", "a..b", "CONS.qal", "COM.qal"})
    EXPECT_TRUE(IsHarmlessName(name)) << name;
  using namespace std::string_view_literals;
  for (const auto name :
       {""sv,     "."sv,    ".."sv,   ".a"sv,    "a."sv,      " a"sv,  "a "sv,       "a/b"sv,
        "a\\b"sv, "a:b"sv,  "a*b"sv,  "a?b"sv,   "a\"b"sv,    "a<b"sv, "a>b"sv,      "a|b"sv,
        "a%41"sv, "a\nb"sv, "a\0b"sv, "a\x7F"sv, "con.qal"sv, "NUL"sv, "Com1.qal"sv, "lpt9 .qal"sv})
    EXPECT_FALSE(IsHarmlessName(name)) << name;
}

TEST(Catalogue, MergesTheFolderAndSorts) {
  const TempFolder folder;
  const auto put = [&](const char* name, const char* content, const char* date) {
    WriteFile(folder / name, content);
    EXPECT_TRUE(Touch(folder / name, *ReadDate(date)));
  };
  put("ALPHA.qal", "other size", "2001-01-01");
  put("only.QAL", "12345", "2002-02-02");
  put("only.txt", "one\r\ntwo", "2002-02-02");
  put("zulu.qal", "", "2003-03-03");
  put("zulu.txt", "for zulu\r\n", "2003-03-03");
  put("Bravo.qal", "x", "2004-04-04");
  put("no package.txt", "x", "2004-04-04");
  std::filesystem::create_directory(folder / "folder.qal");
  Catalogue catalogue;
  catalogue.Load("@alpha.qal,2020-01-01,1\r\nabout\r\n@delta.qal,2020-01-01,2\r\n@alpha.QAL,x,3", 0);
  catalogue.MergeLocalFiles(folder.Path());
  catalogue.SortFiles();
  EXPECT_THAT(Listed(catalogue),
              ElementsAre("Bravo||2004-04-04|1||L", "alpha|qal|2020-01-01|1|about\r\n|LR", "alpha|QAL|x|3||R",
                          "delta|qal|2020-01-01|2||R", "only||2002-02-02|5|one\r\ntwo\r\n|L",
                          "zulu||2003-03-03|0|for zulu\r\n|L"));
}

TEST(Touch, ShowsItsDateInEveryTimeZone) {
  const TempFolder folder;
  WriteFile(folder / "a", "content");
  // The last one goes forward at midnight of that very day.
  for (const char* const zone : {"UTC", "AAA-14", "BBB12", "CET-1CEST", "CCC3DDD,M3.1.2/0,M10.2.0/0"}) {
    ::setenv("TZ", zone, 1);
    ::tzset();
    EXPECT_TRUE(Touch(folder / "a", *ReadDate(" 2005-03-01 ")));
    EXPECT_EQ(DateText(*files::LastModified(folder / "a")), "2005-03-01") << zone;
  }
  ::setenv("TZ", "UTC", 1);
  ::tzset();
  for (const char* const none : {"", "soon", "2005-3-001", "2005-02-29", "2005-13-01", "+005-01-01"})
    EXPECT_FALSE(ReadDate(none)) << none;
}

}  // namespace
}  // namespace tarnwick::test
