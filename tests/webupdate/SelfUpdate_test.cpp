// The program's own renewal: what is newer, what is asked, and that nothing but the signed file gets in.
#include "webupdate/SelfUpdate.h"

#include <gmock/gmock.h>

#include <random>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "support/LinkDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/Touch.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

class SelfUpdateTest : public testing::Test {
 protected:
  SelfUpdateTest() {
    program::Set({folder.Path(), "My Updater", 2, 2, 4});
    link.dllVersion = {1, 9, 9};
    DomainName = "site", DomainPath = "/at";
    WriteFile(folder / "My Updater", "old program");
    WriteFile(folder / "Tarnwick.so", "old library");
    std::filesystem::permissions(folder / "My Updater", std::filesystem::perms(0755));
    TrustKey(keys.open);
    process::SetStarter([this](const process::Command& command) {
      started.push_back(command);
      return starts;
    });
  }
  ~SelfUpdateTest() override { process::SetStarter({}); }

  /// The site offers this, signed.
  void Offer(const std::string& name, const std::string& version, const std::string& content) {
    Put(name, version, content + SignatureLine(content, name, version, keys.secret));
  }
  void Put(const std::string& name, const std::string& version, const std::string& file) {
    site.replies["/at/" + name] = {file};
    rows += "$" + name + ", " + version + ", " + std::to_string(file.size()) + "\r\n";
  }
  bool Check() {
    catalogue.Load(std::exchange(rows, {}), 0);
    return CheckForNewProgram(catalogue);
  }
  bool Install() {
    return ProgramInstaller({[this](std::int32_t size) { shown.push_back("expect " + std::to_string(size)); },
                             [](std::int32_t) {},
                             [this](bool on) { shown.push_back(on ? "hourglass" : "pointer"); },
                             [this](const std::string& text) { shown.push_back(text); }})
        .InstallNewProgram(catalogue);
  }
  Lines Folder() {
    Lines names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
      names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
  }

  TempFolder folder;
  UserDouble user;
  LinkDouble link;
  HttpDouble site;
  KeyPair keys = *MakeKeyPair();
  Catalogue catalogue;
  std::string rows;
  Lines shown;
  std::vector<process::Command> started;
  bool starts = true;
};

TEST_F(SelfUpdateTest, ComparesLevelByLevelAndDatesAsText) {
  WriteFile(folder / "Read me.txt", "old");
  Touch(folder / "Read me.txt", *ReadDate("2024-05-06"));
  const struct {
    std::string row;
    bool newer;
  } cases[] = {
      {"Tarnwick.EXE, 2.2.4, 1", false},
      {"Tarnwick.exe, 2.2.5, 1", true},
      {"other.EXE, 2.1.9, 1", false},
      {"Tarnwick.EXE, 1.9.9, 1", false},
      {"Tarnwick.EXE, 3.0.0, 1", true},
      {"a.EXE, 2.3.0.7, 1", true},
      {"Tarnwick.EXE, 2.9, 1", false},
      {"a.EXE, 2. 2x.10 beta, 1", true},
      {"a.DLL, 1.9.9, 1", false},
      {"a.dll, 1.10.0, 1", true},
      {"Read me.txt, 2024-05-06, 1", false},
      {"Read me.txt, 2024-05-07, 1", true},
      {"Read me.txt, 2023-12-31, 1", false},
      {"missing.htm, 1999-01-01, 1", true},
  };
  for (const auto& [row, newer] : cases) {
    rows = "$" + row + "\r\n";
    EXPECT_EQ(Check(), newer) << row;
    EXPECT_EQ(catalogue.ProgramCount(), 1) << row;
  }
}

TEST_F(SelfUpdateTest, TellsNamesAndVersionsAndMakesTheBatchText) {
  rows = "$Tarnwick.EXE,2.2.5,1\r\n$Tarnwick.DLL,1.0.0,1\r\n$New.htm,2026-01-02,1\r\n";
  Check();
  EXPECT_EQ(UpdateQuestion(catalogue),
            "A newer version of this program is available.\r\n\r\nTarnwick.EXE  v2.2.5\r\n"
            "New.htm   2026-01-02\r\n\r\nDo you wish to download and install?");
  EXPECT_EQ(
      BatchText(catalogue, "C:\\A B", "Mine"),
      "@ECHO OFF\r\n:RETRY\r\n"
      "IF NOT EXIST \"C:\\A B\\$Tarnwick.EXE\" GOTO DONE\r\nERASE \"C:\\A B\\Tarnwick.EXE\"\r\n"
      "IF EXIST \"C:\\A B\\Tarnwick.EXE\" GOTO RETRY\r\n"
      "IF NOT EXIST \"C:\\A B\\$New.htm\" GOTO DONE\r\nERASE \"C:\\A B\\New.htm\"\r\n"
      "IF EXIST \"C:\\A B\\New.htm\" GOTO RETRY\r\n"
      "RENAME \"C:\\A B\\$Tarnwick.EXE\" \"Tarnwick.EXE\"\r\nRENAME \"C:\\A B\\$New.htm\" \"New.htm\"\r\n"
      "CLS\r\nECHO Upgrade Complete.\r\n"
      "ECHO If this window remains open when finished, it is safe to close.\r\n"
      "START \"C:\\A B\\Mine.exe\" \"C:\\A B\\Mine.exe\"\r\n:DONE\r\nERASE \"C:\\A B\\WebUpdate.bat\"");
  EXPECT_EQ(InstalledName("MY UPDATER.exe"), "My Updater");
  EXPECT_EQ(InstalledName("tarnwick.dll"), "Tarnwick.so");
}

TEST_F(SelfUpdateTest, InstallsAllThatIsNewerInOneSwap) {
  Offer("My Updater.EXE", "2.2.5", "new program");
  Offer("Old.EXE", "2.2.3", "not asked for");
  Offer("Tarnwick.DLL", "2.0.0", "new library");
  Offer("Notes.htm", "2026-02-03", "<html>");
  ASSERT_TRUE(Check());
  EXPECT_TRUE(Install());
  EXPECT_THAT(user.boxes,
              ElementsAre(Box{"Program downloaded successfully ...\r\n\r\nPress Ok to Run the New Version.",
                              ui::Buttons::Ok, ui::Icon::Information}));
  EXPECT_EQ(shown.front(), "hourglass");
  EXPECT_THAT(Lines(shown.end() - 2, shown.end()), ElementsAre("pointer", "Installing Program ..."));
  EXPECT_EQ(Folder(), (Lines{"$My Updater.EXE", "$Notes.htm", "$Tarnwick.DLL", "My Updater", "Tarnwick.so",
                             "WebUpdate.journal", "WebUpdate.sh"}));
  EXPECT_THAT(started, ElementsAre(ElementsAre("/bin/sh", folder / "WebUpdate.sh", folder.Path(),
                                               folder / "My Updater", "$My Updater.EXE", "My Updater",
                                               "$Tarnwick.DLL", "Tarnwick.so", "$Notes.htm", "Notes.htm")));
  EXPECT_EQ(std::filesystem::status(folder / "$My Updater.EXE").permissions(), std::filesystem::perms(0755));
  EXPECT_EQ(DateText(*files::LastModified(folder / "$Notes.htm")), "2026-02-03");
  EXPECT_EQ(site.replies.size(), 4U);
}

TEST_F(SelfUpdateTest, OneThatCannotBeHadStopsAll) {
  const std::function<void()> troubles[] = {
      [&] { site.replies.erase("/at/Tarnwick.DLL"); },
      [&] { site.replies["/at/Tarnwick.DLL"].whole = false; },
      [&] { site.replies["/at/Tarnwick.DLL"].status = 500; },
      [&] { site.replies["/at/Tarnwick.DLL"].content += "\n"; },
      [&] { site.opens = false; },
      [&] { std::filesystem::create_directories(folder / "$Tarnwick.DLL/in the way"); },
      [&] { starts = false; },
  };
  for (const auto& trouble : troubles) {
    Offer("Tarnwick.DLL", "2.0.0", "new library");
    Offer("My Updater.EXE", "2.2.5", "new program");
    Check();
    starts = site.opens = true;
    trouble();
    EXPECT_FALSE(Install());
    std::filesystem::remove_all(folder / "$Tarnwick.DLL");
    EXPECT_THAT(Folder(), testing::Not(testing::Contains(testing::StartsWith("WebUpdate"))));
    EXPECT_EQ(ReadFile(folder / "My Updater") + ReadFile(folder / "Tarnwick.so"), "old programold library");
  }
  EXPECT_EQ(started.size(), 1U);
}

TEST_F(SelfUpdateTest, NothingButTheSignedFileIsAccepted) {
  const std::string content =
      "\x7F"
      "ELF" +
      std::string(300, 'x') + "\n";
  const auto sign = [&](const std::string& name, const std::string& version, const KeyPair& pair) {
    return content + SignatureLine(content, name, version, pair.secret);
  };
  const std::string name = "My Updater.EXE", version = "2.2.5";
  const std::string good = sign(name, version, keys);
  const auto accepted = [&](const std::string& file) {
    Put(name, version, file);
    Check();
    return Install();
  };
  EXPECT_TRUE(accepted(good));
  for (const std::string& file :
       {content, std::string(), sign(name, "2.2.3", keys), sign("Tarnwick.DLL", version, keys),
        sign(name, version, *MakeKeyPair()), good + good, good.substr(content.size()), good + " ",
        content + "y" + good.substr(content.size()), std::string("<html>Log in</html>")})
    EXPECT_FALSE(accepted(file)) << file.size();
  EXPECT_FALSE(IsSigned(content + SignatureLine("y" + content, name, "2.2.5", keys.secret), name, "2.2.5\ny",
                        keys.open));
  EXPECT_EQ(SignatureLine(content, name, "2.2 .5", keys.secret) +
                SignatureLine(content, "a\nb", version, keys.secret),
            "");
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    std::string file = good;
    // Every region in turn: the begin, the content, the signature line.
    const std::size_t from = round % 3 == 0 ? 0 : round % 3 == 1 ? 4 : content.size();
    const std::size_t at = from + random() % (file.size() - from);
    switch (round / 3 % 3) {
      case 0:
        file[at] = static_cast<char>(file[at] ^ (1 << random() % 8));
        break;
      case 1:
        file.erase(at, 1 + random() % 9);
        break;
      default:
        file.insert(at, 1 + random() % 9, static_cast<char>(random() % 256));
        break;
    }
    EXPECT_FALSE(file != good && accepted(file)) << "round " << round << " at " << at;
  }
}

}  // namespace
}  // namespace tarnwick::test
