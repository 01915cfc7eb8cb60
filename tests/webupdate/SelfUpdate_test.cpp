// The program's own renewal: what is offered, and that nothing but what the signed list names gets in.
#include "webupdate/SelfUpdate.h"

#include <functional>
#include <random>

#include "UpdateTest.h"
#include "platform/FileLock.h"
#include "platform/files.h"
#include "platform/record.h"
#include "webupdate/BatchText.h"
#include "webupdate/Start.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;

class SelfUpdateTest : public UpdateTest {};

TEST_F(SelfUpdateTest, ComparesLevelByLevelAndDatesAsText) {
  const struct {
    const char *name, *version;
    bool newer;
  } kRows[] = {{"Tarnwick.exe", "2.2.5", true},   {"a.EXE", "2.2x.10", true},       {"a.dll", "1.10.0", true},
               {"Notes.htm", "2024-05-07", true}, {"none.htm", "1999-01-01", true}, {"a.EXE", "2.2.4", false},
               {"Tarnwick.EXE", "1.9.9", false},  {"a.EXE", "2.9", false},          {"a.DLL", "1.9.9", false},
               {"Notes.htm", "2024-05-06", false}};
  for (const auto& [name, version, newer] : kRows) {
    offer = SignedRelease();
    TrustKey(offer.keys.open);
    offer.Add(IsProgramName(name) ? name : "Tarnwick.EXE", IsProgramName(name) ? version : "2.2.4", "a");
    offer.Add(IsLibraryName(name) ? name : "Tarnwick.DLL", IsLibraryName(name) ? version : "1.9.9", "b");
    if (!HasVersion(name)) offer.Add(name, version, "c");
    EXPECT_EQ(Check(), newer) << name << " " << version;
  }
}

TEST_F(SelfUpdateTest, MakesTheQuestionAndTheBatchText) {
  Add("Tarnwick.EXE", "2.2.5");
  Add("Tarnwick.DLL", "1.0.0");
  Add("New.htm", "2026-01-02");
  EXPECT_TRUE(Check());
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
  for (int i = 10; i < 67; ++i) Add(std::to_string(i) + ".htm", "2026-01-02");
  EXPECT_TRUE(Check());
  EXPECT_THAT(UpdateQuestion(catalogue), testing::HasSubstr("17.htm   2026-01-02\r\nand 49 more\r\n\r\nDo"));
  Add("67.htm", "2026-01-02");
  EXPECT_FALSE(Check()) << "No release has so many.";
}

TEST_F(SelfUpdateTest, FetchesWhatDiffersAndLeavesItToAStartWithoutOtherWindows) {
  OfferAll();
  WriteFile(home / "Notes.htm", site.replies["/at/Notes.htm"]);
  site.replies.erase("/at/Notes.htm");
  const std::string longName = std::string(196, 'n') + ".htm";
  Add(longName, "2026-02-03");
  ASSERT_TRUE(Check());
  EXPECT_EQ(WhyNotText(Install()), "");
  EXPECT_THAT(started, ElementsAre(ElementsAre("/bin/sh", home / "WebUpdate.sh", home / "My Updater")));
  const fs::path staging = home / ReadJournal(home)->folder;
  EXPECT_EQ(ReadFile(staging / "My Updater"), "Tarnwick.EXE#new");
  EXPECT_EQ(DateText(*files::LastModified(staging / longName)), "2026-02-03");
  EXPECT_EQ(std::distance(fs::directory_iterator(staging), {}), 4);
  FileLock other;
  EXPECT_FALSE(other.Open(home / "WebUpdate.lock") || other.Share());
  EXPECT_EQ(BeginProgram([](const fs::path&) { return Setback(); }).what, Beginning::What::Go);
  EXPECT_EQ(ReadFile(home / "My Updater"), "#old");
  EXPECT_THAT(FirstPageShown(), testing::StartsWith("An update is ready."));
}

TEST_F(SelfUpdateTest, OneThatCannotBeHadStopsAllAndTellsWhy) {
  OfferAll();
  const auto replies = site.replies;
  FileLock other;
  const TempFolder kept;
  record::Open(kept.Path());
  const std::pair<std::function<void()>, Refusal> kTroubles[] = {
      {[&] { site.replies.erase("/at/Tarnwick.DLL"); }, Refusal::NotFetched},
      {[] { Seam<http::ITransport>::Uninstall(); }, Refusal::NotFetched},
      {[&] { site.replies["/at/Tarnwick.DLL"] += "y"; }, Refusal::NotTheFile},
      {[&] { starts = false; }, Refusal::NotStarted},
      {[&] { fs::create_directory(home / "WebUpdate.journal"); }, Refusal::NotSaved},
      {[&] { EXPECT_FALSE(other.Open(home / "WebUpdate.lock") || other.Share()); }, Refusal::OtherWindow}};
  for (const auto& [trouble, refusal] : kTroubles) {
    ASSERT_TRUE(Check());
    trouble();
    const WhyNot why = Install();
    EXPECT_EQ(why.refusal, refusal) << static_cast<int>(refusal);
    EXPECT_THAT(user.Said(), testing::Not(testing::Contains(testing::HasSubstr("successfully"))));
    EXPECT_TRUE(ReadFile(kept / "Tarnwick.log")
                    .ends_with(" failed: update of the program: " + WhyNotText(why) + "\n"));
    fs::remove(home / "WebUpdate.journal");
    EXPECT_THAT(Left(), ElementsAre());
    EXPECT_EQ(ReadFile(home / "My Updater"), "#old");
    site.replies = replies;
    Seam<http::ITransport>::Install(site);
    starts = true;
  }
  record::Close();
}

TEST_F(SelfUpdateTest, OffersNoOlderNoOthersAndNoRefusedRelease) {
  OfferAll();
  const auto offered = [&](const std::string& version, const std::string& system) {
    offer.release.version = version, offer.release.system = system;
    return Check();
  };
  EXPECT_TRUE(offered("2.2.4", program::System()));
  EXPECT_FALSE(offered("2.2.3", program::System()));
  EXPECT_FALSE(offered("2.2.5", "plan9-mips"));
  EXPECT_TRUE(offered("2.2.5", program::System()));
  EXPECT_FALSE(WriteRefused(home, {"2.2.5", OfferedRelease(catalogue)->signature}));
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

/// A text with something of it replaced, put in or left out.
std::string Altered(std::string text, std::mt19937& random) {
  const std::size_t kind = random() % 3, at = random() % text.size();
  const std::string put(kind == 0 ? 0 : 1 + random() % 9, static_cast<char>(random() % 256));
  return text.replace(at, kind == 1 ? 0 : 1 + random() % 9, put);
}

/// 500 each of lists, of rows and of files: whatever is done to them on the way, nothing but the release as
/// it was signed is ever installed.
TEST_F(SelfUpdateTest, OfWhatWasAlteredNothingIsAccepted) {
  OfferAll();
  std::mt19937 random(7);
  const std::string list = offer.List();
  const auto rows = offer.rows;
  const auto replies = site.replies;
  int refused[3] = {};
  for (int round = 0; round < 1500; ++round) {
    SCOPED_TRACE(round);
    const int what = round % 3;
    std::string text = list;
    offer.rows = rows;
    site.replies = replies;
    if (what == 0) text = Altered(text, random);
    for (std::size_t times = 1 + random() % 3; what == 1 && times > 0 && !offer.rows.empty(); --times) {
      const auto row = offer.rows.begin() + static_cast<std::ptrdiff_t>(random() % offer.rows.size());
      const std::size_t kind = random() % 5;  // left out, added, doubled, altered, of an older release
      if (kind == 0) offer.rows.erase(row);
      if (kind == 1) offer.rows.push_back("$Evil.EXE, 9.9.9, 3\r\n");
      if (kind == 2) offer.rows.push_back(*row);
      if (kind == 3) *row = Altered(*row, random);
      if (kind == 4) offer.rows.insert(row, "$Tarnwick.EXE, 2.2.3, 9\r\n");
    }
    if (what == 2) {
      std::string& file =
          site.replies["/at/" + std::string(round % 2 == 0 ? "Tarnwick.EXE" : "Tarnwick.DLL")];
      file = Altered(file, random);
    }
    bool installed = Check(text + offer.Rows());
    for (int i = 1; i <= catalogue.ProgramCount(); ++i)
      EXPECT_FALSE(catalogue.Programs(i).Newer && catalogue.Programs(i).Name == "Evil.EXE");
    // Line ends and blanks round a line are no part of a list.
    EXPECT_TRUE(!installed || OfferedRelease(catalogue)->lists == list);
    installed = installed && Install().refusal == Refusal::None;
    EXPECT_TRUE(!installed || what != 2 || site.replies == replies);
    refused[what] += !installed;
    if (!installed) {
      EXPECT_THAT(Left(), ElementsAre());
      continue;
    }
    for (const ReleaseFile& file : offer.release.files)
      EXPECT_EQ(ReadFile(home / ReadJournal(home)->folder / InstalledName(file, "My Updater")),
                offer.contents[file.name]);
    DropJournal(home);
  }
  EXPECT_GT(refused[0], 450);
  EXPECT_GT(refused[1], 150) << "Rows that are added or doubled change nothing.";
  EXPECT_GT(refused[2], 450);
  EXPECT_FALSE(Check("@a.qal,2020-01-01,1\r\n" + offer.Text())) << "A list stands above all packages.";
}

/// What readers of before lists go by, and what the sites of today still put behind each file.
TEST(SignedFile, FitsNameVersionAndContentAlone) {
  const KeyPair keys = *MakeKeyPair();
  const std::string name = "My Updater.EXE", version = "2.2.5", content(300, 'x');
  const std::string good = content + SignatureLine(content, name, version, keys.secret);
  EXPECT_TRUE(IsSigned(good, name, version, keys.open));
  EXPECT_FALSE(IsSigned(good, "Updater.EXE", version + " My", keys.open)) << "In one line they are the same.";
  EXPECT_FALSE(IsSigned(good, name, "2.2.3", keys.open) || IsSigned(good, "My.EXE", version, keys.open) ||
               IsSigned(good, name, version, MakeKeyPair()->open));
  std::mt19937 random(5);
  for (int round = 0; round < 500; ++round) {
    const std::string file = Altered(good, random);
    EXPECT_TRUE(file == good || !IsSigned(file, name, version, keys.open)) << round;
  }
}

}  // namespace
}  // namespace tarnwick::test
