// The program's own renewal: what is offered, and that nothing but what the signed list names gets in.
#include "webupdate/SelfUpdate.h"

#include <gmock/gmock.h>

#include <random>

#include "platform/FileLock.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/record.h"
#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "support/LinkDouble.h"
#include "support/SignedRelease.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/BatchText.h"
#include "webupdate/Journal.h"
#include "webupdate/ProgramInstaller.h"
#include "webupdate/Start.h"
#include "webupdate/Touch.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class SelfUpdateTest : public testing::Test {
 protected:
  SelfUpdateTest() {
    program::Set({folder.Path(), "My Updater", 2, 2, 4});
    link.dllVersion = {1, 9, 9};
    DomainName = "site", DomainPath = "/at";
    WriteFile(folder / "My Updater", "old program");
    fs::permissions(folder / "My Updater", fs::perms(0755));
    TrustKey(offer.keys.open);
  }

  void OfferAll(const std::string& version = "2.2.5") {
    offer.release.version = version;
    offer.Add("Tarnwick.EXE", version, "new program");
    offer.Add("Tarnwick.DLL", "2.0.0", "new library");
    offer.Add("Notes.htm", "2026-02-03", "<html>");
    for (const auto& [name, content] : offer.contents) site.replies["/at/" + name] = content;
  }
  bool Check() { return Check(offer.Text()); }
  bool Check(const std::string& text) {
    catalogue.Load(text, 0);
    return CheckForNewProgram(catalogue);
  }
  WhyNot Install() {
    const auto ignore = [](const auto&) {};
    ProgramInstaller installer({ignore, ignore, ignore, ignore});
    const bool installed = installer.InstallNewProgram(catalogue);
    EXPECT_EQ(installed, installer.Why().refusal == Refusal::None);
    return installer.Why();
  }
  /// What lies in the folder but the program, the lock and the script.
  std::vector<std::string> Left() const {
    std::vector<std::string> left;
    for (const auto& each : fs::directory_iterator(folder.Path())) left.push_back(each.path().filename());
    std::erase_if(left, [](const std::string& name) {
      return name == "My Updater" || name == "WebUpdate.lock" || name == "WebUpdate.sh";
    });
    return left;
  }

  TempFolder folder;
  UserDouble user;
  LinkDouble link;
  HttpDouble site;
  SignedRelease offer;
  Catalogue catalogue;
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
  const auto isNewer = [this](const std::string& name, const std::string& version) {
    const KeyPair keys = offer.keys;
    offer = SignedRelease();
    offer.keys = keys;
    offer.Add(IsProgramName(name) ? name : "Tarnwick.EXE", IsProgramName(name) ? version : "2.2.4", "a");
    offer.Add(IsLibraryName(name) ? name : "Tarnwick.DLL", IsLibraryName(name) ? version : "1.9.9", "b");
    if (!HasVersion(name)) offer.Add(name, version, "c");
    return Check();
  };
  const std::pair<const char*, const char*> kNewer[] = {{"Tarnwick.exe", "2.2.5"},
                                                        {"a.EXE", "2.2x.10"},
                                                        {"a.dll", "1.10.0"},
                                                        {"Read me.txt", "2024-05-07"},
                                                        {"missing.htm", "1999-01-01"}};
  for (const auto& [name, version] : kNewer) EXPECT_TRUE(isNewer(name, version)) << name;
  const std::pair<const char*, const char*> kNot[] = {{"Tarnwick.EXE", "2.2.4"},
                                                      {"Tarnwick.EXE", "1.9.9"},
                                                      {"a.EXE", "2.9"},
                                                      {"a.DLL", "1.9.9"},
                                                      {"Read me.txt", "2024-05-06"}};
  for (const auto& [name, version] : kNot) EXPECT_FALSE(isNewer(name, version)) << name << version;
}

TEST_F(SelfUpdateTest, MakesTheQuestionAndTheBatchText) {
  offer.Add("Tarnwick.EXE", "2.2.5", "x");
  offer.Add("Tarnwick.DLL", "1.0.0", "x");
  offer.Add("New.htm", "2026-01-02", "x");
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

TEST_F(SelfUpdateTest, AsksOneShortQuestionForManyFiles) {
  OfferAll();
  for (int i = 10; i < 60; ++i) offer.Add(std::to_string(i) + ".htm", "2026-01-02", "x");
  EXPECT_TRUE(Check());
  EXPECT_THAT(UpdateQuestion(catalogue), testing::HasSubstr("16.htm   2026-01-02\r\nand 43 more\r\n\r\nDo"));
  for (int i = 60; i < 70; ++i) offer.Add(std::to_string(i) + ".htm", "2026-01-02", "x");
  EXPECT_FALSE(Check()) << "No release has so many.";
}

TEST_F(SelfUpdateTest, FetchesWhatDiffersAndLeavesItToTheNextStart) {
  WriteFile(folder / "Notes.htm", "<html>");
  OfferAll();
  site.replies.erase("/at/Notes.htm");
  const std::string longName(196, 'n');
  offer.Add(longName + ".htm", "2026-02-03", "long");
  site.replies["/at/" + longName + ".htm"] = "long";
  ASSERT_TRUE(Check());
  EXPECT_EQ(WhyNotText(Install()), "");
  EXPECT_THAT(started, ElementsAre(ElementsAre("/bin/sh", folder / "WebUpdate.sh", folder / "My Updater")));
  const auto journal = ReadJournal(folder.Path());
  ASSERT_TRUE(journal && journal->program == "My Updater");
  const fs::path staging = folder / journal->folder;
  EXPECT_EQ(ReadFile(staging / "My Updater"), "new program");
  EXPECT_EQ(fs::status(staging / "My Updater").permissions(), fs::perms(0755));
  EXPECT_EQ(ReadFile(staging / "Tarnwick.so"), "new library");
  EXPECT_EQ(DateText(*files::LastModified(staging / (longName + ".htm"))), "2026-02-03");
  EXPECT_EQ(std::distance(fs::directory_iterator(staging), {}), 3);
  EXPECT_EQ(ReadFile(folder / "My Updater"), "old program");
}

TEST_F(SelfUpdateTest, WhatIsFetchedWaitsAsLongAsAnotherWindowIsOpen) {
  OfferAll();
  ASSERT_TRUE(Check());
  EXPECT_EQ(Install().refusal, Refusal::None);
  FileLock other;
  EXPECT_FALSE(other.Open(folder / "WebUpdate.lock") || other.Share());
  EXPECT_EQ(BeginProgram([](const fs::path&) { return true; }).what, Beginning::What::Go);
  EXPECT_EQ(ReadFile(folder / "My Updater"), "old program");
  EXPECT_EQ(ReadJournal(folder.Path())->state, Journal::State::Staged);
  EXPECT_THAT(FirstPageShown(), testing::StartsWith("An update is ready."));
}

TEST_F(SelfUpdateTest, OneThatCannotBeHadStopsAllAndTellsWhy) {
  OfferAll();
  FileLock other;
  const TempFolder kept;
  record::Open(kept.Path());
  const struct {
    std::function<void()> trouble;
    Refusal refusal;
  } kTroubles[] = {
      {[&] { site.replies.erase("/at/Tarnwick.DLL"); }, Refusal::NotFetched},
      {[] { Seam<http::ITransport>::Uninstall(); }, Refusal::NotFetched},
      {[&] { site.replies["/at/Tarnwick.DLL"] = "new librarY"; }, Refusal::NotTheFile},
      {[&] { site.replies["/at/Tarnwick.DLL"] += "y"; }, Refusal::NotTheFile},
      {[&] { starts = false; }, Refusal::NotStarted},
      {[&] { fs::create_directory(folder / "WebUpdate.journal"); }, Refusal::NotSaved},
      {[&] { EXPECT_FALSE(other.Open(folder / "WebUpdate.lock") || other.Share()); }, Refusal::OtherWindow}};
  for (const auto& row : kTroubles) {
    ASSERT_TRUE(Check());
    row.trouble();
    const WhyNot why = Install();
    EXPECT_EQ(why.refusal, row.refusal) << static_cast<int>(row.refusal);
    EXPECT_TRUE(ReadFile(kept / "Tarnwick.log")
                    .ends_with(" failed: update of the program: " + WhyNotText(why) + "\n"));
    fs::remove(folder / "WebUpdate.journal");
    EXPECT_THAT(Left(), ElementsAre());
    EXPECT_EQ(ReadFile(folder / "My Updater"), "old program");
    for (const auto& [name, content] : offer.contents) site.replies["/at/" + name] = content;
    Seam<http::ITransport>::Install(site);
    starts = true;
  }
  record::Close();
  EXPECT_EQ(MayInstall().refusal, Refusal::OtherWindow);
  other.Release();
  EXPECT_EQ(MayInstall().refusal, Refusal::None);
}

TEST_F(SelfUpdateTest, OffersNoOlderNoOthersAndNoRefusedRelease) {
  OfferAll();
  EXPECT_TRUE(Check());
  const auto offered = [&](const std::string& version, const std::string& system) {
    offer.release.version = version, offer.release.system = system;
    return Check();
  };
  EXPECT_TRUE(offered("2.2.4", program::System()));
  EXPECT_FALSE(offered("2.2.3", program::System()));
  EXPECT_FALSE(offered("2.2.5", "plan9-mips"));
  EXPECT_TRUE(offered("2.2.5", program::System()));
  EXPECT_FALSE(WriteRefused(folder.Path(), {"2.2.5", OfferedRelease(catalogue)->signature}));
  EXPECT_FALSE(Check());
  EXPECT_TRUE(offered("2.2.6", program::System())) << "The next one is.";
}

TEST_F(SelfUpdateTest, AKeyIsHandedOn) {
  SignedRelease later;
  OfferAll();
  later.Add("Tarnwick.EXE", "2.2.6", "later program");
  later.Add("Tarnwick.DLL", "2.0.0", "new library");
  later.release.version = "2.2.6";
  EXPECT_FALSE(Check(later.Text()));
  EXPECT_FALSE(Check(offer.List() + later.Text()));
  offer.next = later.keys.open;
  EXPECT_TRUE(Check(offer.List() + later.Text()));
  EXPECT_EQ(OfferedRelease(catalogue)->version, "2.2.6");
  EXPECT_TRUE(ReadRelease(OfferedRelease(catalogue)->lists, offer.keys.open, program::System()));
  EXPECT_FALSE(Check(later.List() + offer.List() + later.Rows())) << "The one that hands it on comes first.";
}

TEST_F(SelfUpdateTest, OfRowsAndListsThatWereAlteredNoneIsAccepted) {
  OfferAll();
  const std::vector<std::string> rows = offer.rows;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    offer.rows = rows;
    offer.rows.erase(offer.rows.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_FALSE(Check()) << "without " << rows[i];
    offer.rows = rows;
    offer.rows.push_back(rows[i]);
    EXPECT_TRUE(Check());
    EXPECT_EQ(Install().refusal, Refusal::None) << "One that is doubled counts once.";
    DropJournal(folder.Path());
  }
  offer.rows = rows;
  offer.rows.push_back("$Evil.EXE, 9.9.9, 3\r\n");
  EXPECT_TRUE(Check());
  EXPECT_FALSE(catalogue.Programs(4).Newer) << "The list does not name it.";
  EXPECT_FALSE(Check("@a.qal,2020-01-01,1\r\n" + offer.Text())) << "A list stands above all packages.";
  offer.rows = rows;
  const std::string list = offer.List();
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    std::string altered = list;
    const std::size_t at = random() % altered.size();
    const std::string other(round % 3 == 0 ? 0 : 1 + random() % 9, static_cast<char>(random() % 256));
    altered.replace(at, round % 3 == 1 ? 0 : 1 + random() % 9, other);
    const bool offered = Check(altered + offer.Rows());
    // Line ends and blanks round a line are no part of it.
    EXPECT_TRUE(!offered || OfferedRelease(catalogue)->lists == list) << "round " << round << " at " << at;
  }
}

TEST_F(SelfUpdateTest, OfFilesThatWereAlteredNoneIsAccepted) {
  OfferAll();
  ASSERT_TRUE(Check());
  std::mt19937 random(11);
  const std::string good = site.replies["/at/Tarnwick.EXE"];
  for (int round = 0; round < 100; ++round) {
    std::string altered = good;
    altered.replace(random() % altered.size(), random() % 3,
                    std::string(1, static_cast<char>(random() % 256)));
    site.replies["/at/Tarnwick.EXE"] = altered;
    EXPECT_TRUE(altered == good || Install().refusal == Refusal::NotTheFile) << round;
  }
  EXPECT_THAT(Left(), ElementsAre());
}

/// What readers of before lists go by, and what the sites of today still put behind each file.
TEST(SignedFile, FitsNameVersionAndContentAlone) {
  const KeyPair keys = *MakeKeyPair();
  const std::string name = "My Updater.EXE", version = "2.2.5";
  const std::string content = "begin" + std::string(300, 'x') + "\n";
  const auto line = [&](const std::string& as, const std::string& number, const KeyPair& pair) {
    return SignatureLine(content, as, number, pair.secret);
  };
  const std::string good = content + line(name, version, keys);
  EXPECT_TRUE(IsSigned(good, name, version, keys.open));
  EXPECT_FALSE(IsSigned(good, "Updater.EXE", version + " My", keys.open))
      << "In one line these are the same.";
  for (const std::string& file :
       {content, std::string(), content + line(name, "2.2.3", keys),
        content + line("Tarnwick.DLL", version, keys), content + line(name, version, *MakeKeyPair()),
        good + good, line(name, version, keys), good + " ", content + "y" + line(name, version, keys)})
    EXPECT_FALSE(IsSigned(file, name, version, keys.open)) << file.size();
  for (std::size_t at = 0; at < good.size(); ++at) {
    std::string file = good;
    file[at] = static_cast<char>(file[at] ^ 1);
    EXPECT_FALSE(IsSigned(file, name, version, keys.open)) << at;
  }
}

TEST(Keys, AreCheckedForWhatTheyAre) {
  const KeyPair keys = *MakeKeyPair();
  EXPECT_EQ(ReadPublicKey(" " + KeyText(keys.open) + "\n"), keys.open);
  for (const std::string& wrong :
       {std::string(), std::string("1234"), KeyText(keys.secret), std::string(64, '0')})
    EXPECT_FALSE(ReadPublicKey(wrong)) << wrong.size();
  SecretKey halves = keys.secret;
  halves.back() ^= 1;
  EXPECT_EQ(PublicHalf(keys.secret), keys.open);
  EXPECT_TRUE(ReadSecretKey(KeyText(keys.secret)) && !ReadSecretKey(KeyText(halves)));
}

}  // namespace
}  // namespace tarnwick::test
