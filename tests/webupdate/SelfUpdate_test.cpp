// The program's own renewal: what is newer, and that nothing but the signed file gets in.
#include "webupdate/SelfUpdate.h"

#include <gmock/gmock.h>

#include <array>
#include <random>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "support/LinkDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/BatchText.h"
#include "webupdate/ProgramInstaller.h"
#include "webupdate/Touch.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class SelfUpdateTest : public testing::Test {
 protected:
  SelfUpdateTest() {
    program::Set({folder.Path(), "My Updater", 2, 2, 4});
    link.dllVersion = {1, 9, 9};
    DomainName = "site", DomainPath = "/at";
    WriteFile(folder / "My Updater", "old program");
    std::filesystem::permissions(folder / "My Updater", std::filesystem::perms(0755));
    TrustKey(keys.open);
  }

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
    const auto ignore = [](const auto&) {};
    return ProgramInstaller({ignore, ignore, ignore, ignore}).InstallNewProgram(catalogue);
  }

  TempFolder folder;
  UserDouble user;
  LinkDouble link;
  HttpDouble site;
  KeyPair keys = *MakeKeyPair();
  Catalogue catalogue;
  std::string rows;
  std::vector<process::Command> started;
  const InPlace<process::Starter> starter{process::Starter{[this](const process::Command& command) {
    started.push_back(command);
    return starts;
  }}};
  bool starts = true;
};

TEST_F(SelfUpdateTest, ComparesLevelByLevelAndDatesAsText) {
  WriteFile(folder / "Read me.txt", "old");
  Touch(folder / "Read me.txt", *ReadDate("2024-05-06"));
  const auto isNewer = [this](const std::string& offer) {
    rows = "$" + offer + ", 1";
    return Check();
  };
  for (const char* const offer : {"Tarnwick.exe, 2.2.5", "a.EXE, 2. 2x.10 beta", "a.dll, 1.10.0",
                                  "Read me.txt, 2024-05-07", "missing.htm, 1999-01-01"})
    EXPECT_TRUE(isNewer(offer)) << offer;
  for (const char* const offer : {"Tarnwick.EXE, 2.2.4", "Tarnwick.EXE, 1.9.9", "a.EXE, 2.9", "a.DLL, 1.9.9",
                                  "Read me.txt, 2024-05-06"})
    EXPECT_FALSE(isNewer(offer)) << offer;
}

TEST_F(SelfUpdateTest, MakesTheQuestionAndTheBatchText) {
  rows = "$Tarnwick.EXE,2.2.5,1\r\n$Tarnwick.DLL,1.0.0,1\r\n$New.htm,2026-01-02,1\r\n";
  Check();
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
  EXPECT_EQ(UpdateQuestion(catalogue),
            "A newer version of this program is available.\r\n\r\nTarnwick.EXE  v2.2.5\r\n"
            "New.htm   2026-01-02\r\n\r\nDo you wish to download and install?");
}

TEST_F(SelfUpdateTest, InstallsAllThatIsNewerInOneSwap) {
  Offer("MY UPDATER.exe", "2.2.5", "new program");
  Offer("Old.EXE", "2.2.3", "not asked for");
  Offer("tarnwick.dll", "2.0.0", "new library");
  Offer("Notes.htm", "2026-02-03", "<html>");
  ASSERT_TRUE(Check());
  EXPECT_TRUE(Install());
  EXPECT_THAT(ReadFile(folder / "$MY UPDATER.exe"), StartsWith("new program"));
  EXPECT_THAT(ReadFile(folder / "$tarnwick.dll"), StartsWith("new library"));
  EXPECT_FALSE(std::filesystem::exists(folder / "$Old.EXE"));
  EXPECT_THAT(started, ElementsAre(ElementsAre("/bin/sh", folder / "WebUpdate.sh", folder.Path(),
                                               folder / "My Updater", "$MY UPDATER.exe", "My Updater",
                                               "$tarnwick.dll", "Tarnwick.so", "$Notes.htm", "Notes.htm")));
  EXPECT_EQ(std::filesystem::status(folder / "$MY UPDATER.exe").permissions(), std::filesystem::perms(0755));
  EXPECT_EQ(DateText(*files::LastModified(folder / "$Notes.htm")), "2026-02-03");
}

TEST_F(SelfUpdateTest, OneThatCannotBeHadStopsAll) {
  const std::function<void()> troubles[] = {
      [&] { site.replies.erase("/at/Tarnwick.DLL"); },
      [&] { ++catalogue.Programs(1).Size; },
      [] { Seam<http::ITransport>::Uninstall(); },
      [&] { std::filesystem::create_directories(folder / "$Tarnwick.DLL/in the way"); },
      [&] { starts = false; },
      [&] { std::filesystem::create_directories(folder / "WebUpdate.sh.new/in the way"); },
  };
  for (const auto& trouble : troubles) {
    Offer("Tarnwick.DLL", "2.0.0", "new library");
    Offer("My Updater.EXE", "2.2.5", "new program");
    Check();
    starts = true;
    Seam<http::ITransport>::Install(site);
    trouble();
    EXPECT_FALSE(Install());
    std::filesystem::remove_all(folder / "$Tarnwick.DLL");
    for (const char* const name : {"WebUpdate.sh", "WebUpdate.journal", "Tarnwick.so"})
      EXPECT_FALSE(files::FileExists(folder / name)) << name;
    EXPECT_EQ(ReadFile(folder / "My Updater"), "old program");
  }
}

TEST_F(SelfUpdateTest, NothingButTheSignedFileIsAccepted) {
  const std::string name = "My Updater.EXE", version = "2.2.5";
  const std::string content = "begin" + std::string(300, 'x') + "\n";
  const auto line = [&](const std::string& as, const std::string& number, const KeyPair& pair) {
    return SignatureLine(content, as, number, pair.secret);
  };
  const auto accepted = [&](const std::string& file, const std::string& as, const std::string& number) {
    Put(as, number, file);
    Check();
    return Install();
  };
  const std::string good = content + line(name, version, keys);
  EXPECT_TRUE(accepted(good, name, version));
  EXPECT_FALSE(accepted(good, "Updater.EXE", version + " My")) << "In one line these are the same.";
  for (const std::string& file :
       {content, std::string(), content + line(name, "2.2.3", keys),
        content + line("Tarnwick.DLL", version, keys), content + line(name, version, *MakeKeyPair()),
        good + good, line(name, version, keys), good + " ", content + "y" + line(name, version, keys)})
    EXPECT_FALSE(accepted(file, name, version)) << file.size();
  std::mt19937 random(7);
  for (std::size_t round = 0; round < 500; ++round) {
    std::string file = good;
    // Every region in turn: the begin, the content, the signature line.
    const std::size_t from = std::array{std::size_t{0}, std::size_t{5}, content.size()}[round % 3];
    const std::size_t at = from + random() % (round % 3 == 0 ? 5 : file.size() - from);
    const std::string other(round / 3 % 3 == 0 ? 0 : 1 + random() % 9, static_cast<char>(random() % 256));
    file.replace(at, round / 3 % 3 == 1 ? 0 : 1 + random() % 9, other);
    EXPECT_FALSE(file != good && accepted(file, name, version)) << "round " << round << " at " << at;
  }
}

}  // namespace
}  // namespace tarnwick::test
