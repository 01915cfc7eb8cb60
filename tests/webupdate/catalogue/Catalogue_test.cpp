// The catalogue: what is read, what is not believed, and dates in all time zones.
// Packages fetched and removed, with every operation on a file failed and cut in turn: old or new, byte for
// byte, nothing but its own half left beside, and the next attempt works.
#include "webupdate/Catalogue.h"

#include <gmock/gmock.h>

#include <map>

#include "platform/files.h"
#include "support/FileFaults.h"
#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/HarmlessName.h"
#include "webupdate/PackageSignature.h"
#include "webupdate/Packages.h"
#include "webupdate/Touch.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using Files = std::map<std::string, std::string>;

/// Each package as "Name|Ext|Date|Size|Description|places;", then each file of the program as "$Name|...;".
std::string Listed(Catalogue& catalogue) {
  std::string listed;
  for (std::int32_t i = 1; i <= catalogue.FileCount(); ++i) {
    const FileEntry& file = catalogue.Files(i);
    listed += file.Name + "|" + file.Ext + "|" + file.Date + "|" + std::to_string(file.Size) + "|" +
              file.Description + (file.Local ? "|L" : "|") + (file.Remote ? "R;" : ";");
  }
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const ProgramEntry& program = catalogue.Programs(i);
    listed += "$" + program.Name + "|" + program.Version + "|" + std::to_string(program.Size) + ";";
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
    std::string listed;
  } cases[] = {
      {"<html>captive</html>", 0, ""},
      {mixed, 0, "a|qal|d|1|one\r\ntwo\r\n\r\n|R;$P.EXE|1.2.3|4;"},
      {mixed, 1, "b|qal|d|2|for b\r\ntwo\r\n\r\n|R;$P.EXE|1.2.3|4;"},
      {mixed, 2, "$P.EXE|1.2.3|4;"},
      {" @ a b(1).QAL , 2005-03-01 ,  12 b, c \r\n said \r\n", 0, "a b(1)|QAL|2005-03-01|12|said\r\n\r\n|R;"},
      {"@a.qal,d,-5\n", 0, "a|qal|d|0||R;"},
      {"@a.qal,,99999999999", 0, "a|qal||2147483647||R;"},
      // A row that is skipped takes its description along; a broken line of a program does not.
      {"@a.qal,d,1\r\n@b.qal,d\r\nfor b", 0, "a|qal|d|1||R;"},
      {"@a.qal,d,1\r\n$5 off\r\nfor a", 0, "a|qal|d|1|for a\r\n|R;"},
      {"@a.qal,d,1\r\n" + longLine + "\r\nfor a", 0, "a|qal|d|1|for a\r\n|R;"},
      {"@a.txt,d,1\r\n@.qal,d,1\r\n@qal,d,1\r\n@,d,1\r\n@../a.qal,d,1\r\n@CONxqal,d,1", 0, ""},
      {"@" + longName + ".qal,d,1\r\n@n" + longName + ".qal,d,1", 0, longName + "|qal|d|1||R;"},
      {"@a.qal,d\n,1\r\n$../P.EXE,1,1", 0, ""},
      {"@a.qal,d,1\r\n" + std::string(Catalogue::kLongestText, ' '), 0, ""},
  };
  Catalogue catalogue;
  for (const auto& each : cases) {
    catalogue.Load(each.text, each.deviceClass);
    EXPECT_EQ(Listed(catalogue), each.listed) << each.text.substr(0, 60);
  }
  std::string many;
  for (std::int32_t i = 0; i < Catalogue::kMostEntries; ++i) many += "@abcde,,\r\n";
  for (const bool cut : {false, true}) {
    catalogue.Load(many, 0);
    EXPECT_EQ(catalogue.FileCount(), Catalogue::kMostEntries);
    EXPECT_EQ(catalogue.IsCut(), cut);
    many += "@abcde,,\r\nlost\r\n";
  }
}

TEST(HarmlessName, IsOneComponentOnAnySystem) {
  for (const char* const name : {"MC 0514 (beta) [2].qal", "Zo\xEB.qal", "a..b", "CONS.qal", "COM.qal"})
    EXPECT_TRUE(IsHarmlessName(name)) << name;
  for (const char* const name : {"", ".a", "a.", " a", "a ", "con.qal", "NUL", "Com1.qal", "lpt9 .qal"})
    EXPECT_FALSE(IsHarmlessName(name)) << name;
  for (const char forbidden : std::string("/\\:*?\"<>|%\n\0\x7F", 13))
    EXPECT_FALSE(IsHarmlessName(std::string("a") + forbidden + "b")) << forbidden;
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

TEST(Packages, RemovalTakesTheFileOfTheRowAndNoOther) {
  const TempFolder folder;
  const UserDouble user;
  const Files all{{"ALPHA.qal", "1"}, {"Alpha.qal", "2"}, {"Alpha.QAL", "3"},
                  {"Alpha.txt", "n"}, {"alpha.qal", "4"}, {"Alpha.qal.new", "own"}};
  const auto found = [&] {
    Files files;
    for (const auto& file : fs::directory_iterator(folder.Path()))
      files[file.path().filename()] = ReadFile(file.path());
    return files;
  };
  for (const auto& [name, content] : all) WriteFile(folder / name, content);
  Catalogue catalogue;
  catalogue.Load("@Alpha.qal,2020-01-01,1", 0);
  catalogue.MergeLocalFiles(folder.Path());
  ASSERT_EQ(catalogue.FileCount(), 4);
  EXPECT_EQ(catalogue.Files(1).LocalFile, "Alpha.qal") << "The one that is spelt so.";
  Files left = all;
  for (std::int32_t row = 1; row <= 4; ++row) {
    FileEntry& entry = catalogue.Files(row);
    const std::string file = entry.LocalFile;
    EXPECT_TRUE(RemovePackage(folder.Path(), entry));
    EXPECT_FALSE(entry.Local || RemovePackage(folder.Path(), entry));
    left.erase(file);
    if (!left.contains("Alpha.qal") && !left.contains("Alpha.QAL")) left.erase("Alpha.txt");
    EXPECT_EQ(found(), left) << file;
  }
  EXPECT_EQ(left, (Files{{"Alpha.qal.new", "own"}}));
}

const Files kOld{{"a.qal", "old package"}, {"a.txt", "old note"}};
const Files kOldNote{{"a.txt", "old note"}};
const Files kNew{{"a.qal", "new package"}, {"a.txt", "new note\r\n"}};

class PackagesTest : public testing::Test {
 protected:
  PackagesTest() { site.replies["/a.qal"] = {kNew.at("a.qal")}; }
  void Prepare(const Files& before) {
    fs::remove_all(home);
    fs::create_directory(home);
    for (const auto& [name, content] : before) WriteFile(home / name, content);
    entry = {"a", "qal", "2005-03-01", 3, "new note\r\n", before.contains("a.qal"), true};
    if (entry.Local) entry.LocalFile = "a.qal";
    user.boxes.clear();
  }
  Files Found() const {
    Files found;
    for (const auto& file : fs::directory_iterator(home))
      found[file.path().filename()] = ReadFile(file.path());
    return found;
  }
  bool Download() {
    HTTPClass http;
    return DownloadPackage(http, home, entry);
  }

  TempFolder folder;
  fs::path home = folder / "packages";
  UserDouble user;
  HttpDouble site;
  FileEntry entry;
};

TEST_F(PackagesTest, DownloadLeavesOldOrNew) {
  const std::string unable = "Ok !|Unable to save the file a.qal\r\nNo space left on device";
  for (const Files& before : {Files{}, kOld, kOldNote}) {
    const auto check = [&](Fault fault) {
      Files found = Found();
      if (fault == Fault::Fail) {
        EXPECT_THAT(found, AnyOf(before, kNew));
        EXPECT_EQ(entry.Local, found.contains("a.qal"));
        EXPECT_EQ(user.boxes, std::vector<std::string>(found == kNew ? 0 : 1, unable));
      }
      std::erase_if(found, [](const auto& file) { return file.first.ends_with(".new"); });
      Files newNote = before;
      newNote["a.txt"] = kNew.at("a.txt");
      EXPECT_THAT(found, AnyOf(before, newNote, kNew));
      EXPECT_TRUE(Download());
      EXPECT_EQ(Found(), kNew);
    };
    EXPECT_GE(EachFault([&] { Prepare(before); }, [this] { Download(); }, check), 24);
  }
}

TEST_F(PackagesTest, SavesNothingWhoseSignatureDoesNotFit) {
  const KeyPair key = *MakeKeyPair(), other = *MakeKeyPair();
  TrustPackageKey(key.open);
  const std::string package = "A=1\r\nB=2\r\n", good = SignPackage(package, key.secret);
  EXPECT_EQ(SignPackage("A=1", key.secret), "") << "Its last line would end with the signature.";
  EXPECT_EQ(SignPackage(good, key.secret), good);
  std::string renewed = good, cut = good.substr(0, good.size() - 5);
  renewed[0] = 'B';
  const struct {
    std::string content;
    bool comes;
  } cases[] = {{good, true},
               {package, true},
               {renewed, false},
               {cut, false},
               {good.substr(5), false},
               {good + "\r\n", false},
               {SignPackage(package, other.secret), false}};
  for (const auto& each : cases) {
    Prepare(kOld);
    site.replies["/a.qal"] = each.content;
    EXPECT_EQ(Download(), each.comes) << each.content;
    EXPECT_EQ(Found().at("a.qal"), each.comes ? each.content : "old package");
    EXPECT_EQ(user.boxes,
              std::vector<std::string>(
                  each.comes ? 0 : 1,
                  "Ok X|The signature of this package does not fit. It may have been altered on its way.\r\n"
                  "It was not saved."));
  }
}

TEST_F(PackagesTest, RemovalLeavesTheListTrue) {
  const std::string begin = "Ok !|Unable to delete the file ", end = "\r\nNo space left on device";
  const auto check = [&](Fault fault) {
    const Files left = Found();
    EXPECT_THAT(left, AnyOf(kOld, kOldNote, Files{}));
    if (fault == Fault::Fail) {
      EXPECT_EQ(entry.Local, left.contains("a.qal"));
      EXPECT_EQ(user.boxes,
                std::vector(left.empty() ? 0 : 1, begin + (left == kOld ? "a.qal" : "a.txt") + end));
    }
    entry.Local = true;
    entry.LocalFile = "a.qal";
    EXPECT_EQ(RemovePackage(home, entry), left.contains("a.qal"));
    EXPECT_FALSE(Found().contains("a.qal"));
  };
  EXPECT_GE(EachFault([this] { Prepare(kOld); }, [this] { RemovePackage(home, entry); }, check), 6);
}

}  // namespace
}  // namespace tarnwick::test
