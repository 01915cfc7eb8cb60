// Fetch, swap and taking back, failed, cut and robbed of their power at every step: old or new, never mixed.
#include "webupdate/Swap.h"

#include <functional>
#include <random>

#include "UpdateTest.h"
#include "platform/files.h"
#include "support/FileFaults.h"
#include "support/LossyDisk.h"
#include "webupdate/EarlierSwap.h"
#include "webupdate/Start.h"

namespace tarnwick::test {
namespace {

using What = Settlement::What;
using Kind = Setback::Kind;
using testing::ElementsAre;

class SwapTest : public UpdateTest {
 protected:
  SwapTest() {
    OfferAll();
    EXPECT_TRUE(Check());
  }
  /// A release waits.
  void Prepare() {
    Reset();
    Install();
    staged = home / ReadJournal(home)->folder;
  }
  What Settle() {
    tried = false;
    const Settlement settled = SettleUpdate(home, called, [this](const fs::path& program) {
      tried = fs::exists(program);
      return Setback{runs};
    });
    why = settled.why.kind;
    return settled.what;
  }
  /// The next starts settle it, whatever came before: all files are of one release then, with their rights.
  void ExpectWhole(const std::string& where) {
    SCOPED_TRACE(where);
    EXPECT_NE(Settle(), What::Failed);
    Settle();
    const std::string program = ReadFile(home / called);
    last = program.substr(std::min(program.find('#'), program.size()));
    EXPECT_TRUE(last == "#old" || last == "#new") << program;
    for (const std::string& each : {called, std::string("Tarnwick.so"), std::string("Notes.htm")}) {
      EXPECT_TRUE(ReadFile(home / each).ends_with(last)) << each << " beside " << last;
      EXPECT_EQ(fs::status(home / each).permissions(), fs::perms(each[0] == 'N' ? 0640 : 0755)) << each;
    }
    EXPECT_EQ(fs::exists(home / "Added.htm"), last == "#new");
    const auto journal = ReadJournal(home);
    EXPECT_EQ(journal && journal->state == Journal::State::Moved, last == "#new" && !confirmed);
  }

  fs::path staged;
  std::string called = "My Updater";
  Kind runs = Kind::None;  ///< What a trial says.
  Kind why = Kind::None;
  bool tried = false;
  bool confirmed = false;
  std::string last;
};

TEST_F(SwapTest, FailedOrCutAtEachStepTheNextStartFindsOldOrNew) {
  const auto swapped = [this] { Prepare(), Settle(); };
  EXPECT_GE(EachFault([this] { Reset(); }, [this] { Install(); }, [this](Fault) { ExpectWhole("fetch"); }),
            60);
  EXPECT_EQ(last, "#new") << "Undisturbed.";
  EXPECT_GE(EachFault([this] { Prepare(); }, [this] { Settle(); }, [this](Fault) { ExpectWhole("forward"); }),
            60);
  EXPECT_EQ(last, "#new");
  EXPECT_GE(EachFault(
                swapped, [this] { TakeBack(home, {}); }, [this](Fault) { ExpectWhole("back"); }),
            40);
  EXPECT_EQ(last, "#old");
  EXPECT_EQ(DateText(*files::LastModified(home / "Notes.htm")), "2024-05-06");
  EXPECT_EQ(ReadRefused(home)->version, "2.2.5");
  confirmed = true;
  const auto expectNew = [this](Fault) {
    ConfirmUpdate(home);
    ExpectWhole("confirm");
    EXPECT_EQ(last, "#new");
  };
  EXPECT_GE(EachFault(
                swapped, [this] { ConfirmUpdate(home); }, expectNew),
            4);
}

TEST_F(SwapTest, APowerCutLeavesOldOrNewWhateverWasLost) {
  std::mt19937 random(3);
  int seen[2] = {};
  for (int order = 0; order < 501; ++order) {
    const int what = order % 3;  // fetched, swapped, taken back
    what == 0 ? Reset() : Prepare();
    if (what == 2) Settle();
    LossyDisk disk(home);
    const auto calls = DoneCalls([&] {
      what == 0 ? void(Install()) : what == 1 ? void(Settle()) : void(TakeBack(home, {}));
    });
    ASSERT_GT(calls.size(), 20U);
    disk.Cut(calls, random() % (calls.size() + 1), random);
    ExpectWhole(std::to_string(order));
    ++seen[last == "#new"];
  }
  EXPECT_GT(std::min(seen[0], seen[1]), 60);
}

TEST_F(SwapTest, WhatDoesNotFitTheListOnDiskIsDroppedAndWhatIsInstalledIsNotMissed) {
  const auto rename = [&](const std::string& other) {
    fs::rename(home / std::exchange(called, other), home / other);
  };
  const std::pair<std::function<void()>, Kind> kTroubles[] = {
      {[&] { fs::remove(staged / "Tarnwick.so"), WriteFile(home / "Tarnwick.so", "Tarnwick.DLL#new"); },
       Kind::None},
      {[&] { fs::remove(staged / "My Updater"), WriteFile(home / "My Updater", "Tarnwick.EXE#new"); },
       Kind::None},
      {[&] { rename("lists"); }, Kind::None},
      {[&] { rename("a\nlists\n%0A"); }, Kind::None},
      {[&] { fs::remove(staged / "My Updater"); }, Kind::Missing},
      {[&] { fs::remove(staged / "Tarnwick.so"); }, Kind::Missing},
      {[&] { WriteFile(staged / "My Updater", ""); }, Kind::NotTheFile},
      {[&] { WriteFile(staged / "Tarnwick.so", "Tarnwick.DLL#neW"); }, Kind::NotTheFile},
      {[&] {
         program::Set({home, "My Updater", 2, 2, 6});
       },
       Kind::Older},
      {[&] { TrustKey(MakeKeyPair()->open); }, Kind::NotBelieved},
      {[&] { runs = Kind::NotTried; }, Kind::NotTried},
      {[&] { runs = Kind::CannotRun; }, Kind::CannotRun}};
  for (const auto& [trouble, expected] : kTroubles) {
    called = "My Updater", runs = Kind::None;
    Prepare();
    trouble();
    const bool installs = expected == Kind::None;
    EXPECT_EQ(Settle(), installs ? What::Swapped : What::Dropped) << called;
    EXPECT_EQ(why, expected);
    EXPECT_EQ(tried, installs || expected == runs) << "A new library alone is tried as well.";
    TrustKey(offer.keys.open);
    ExpectWhole("settled");
    EXPECT_EQ(last, installs ? "#new" : "#old");
    EXPECT_EQ(fs::exists(staged), installs);
    EXPECT_EQ(ReadRefused(home).has_value(), runs == Kind::CannotRun) << "Only that is not offered again.";
  }
}

TEST_F(SwapTest, WhereThereIsNoWayBackUnpackingAnewIsOne) {
  for (const bool lost : {false, true}) {
    Prepare();
    Settle();
    NoteAttempt(home, *ReadJournal(home));
    TellUnseen();
    EXPECT_EQ(Attempts(home, *ReadJournal(home)), 0);
    Journal journal = *ReadJournal(home);
    journal.state = Journal::State::Back;
    EXPECT_FALSE(WriteJournal(home, journal));
    if (lost) {
      fs::remove_all(staged / "old"), WriteFile(home / "Tarnwick.so", "#old");
      EXPECT_EQ(Settle(), What::Failed);
    }
    for (const char* const each : {"My Updater", "Tarnwick.so"}) WriteFile(home / each, "#unpacked");
    EXPECT_EQ(Settle(), What::Dropped);
    EXPECT_EQ(ReadFile(home / "My Updater") + ReadFile(home / "Tarnwick.so"), "#unpacked#unpacked");
    EXPECT_FALSE(ReadJournal(home) || fs::exists(staged));
  }
}

TEST_F(SwapTest, AJournalThatLeadsOutOfTheFolderMovesNothing) {
  WriteFile(folder / "outside", "kept");
  const std::string good = "WebUpdate.0123456789abcdef";
  const std::pair<std::string, std::string> kJournals[] = {
      {good, "../outside"}, {good, folder / "outside"}, {good + "/..", "Notes.htm"}, {"../a b", "Notes.htm"}};
  for (const auto& [update, name] : kJournals) {
    WriteFile(home / "WebUpdate.journal",
              "tarnwick swap 2\nrefused\n" + update + "\nP\n2.2.5\ns\n- " + name + "\nlists\nend\n");
    EXPECT_EQ(Settle(), What::Nothing) << update << " " << name;
    EXPECT_TRUE(fs::exists(folder / "outside") && fs::exists(home / "Notes.htm"));
  }
  fs::remove(home / "WebUpdate.journal");
  fs::create_symlink("WebUpdate.journal", home / "WebUpdate.journal");
  EXPECT_EQ(Settle(), What::Failed) << "What cannot be read may be anything.";
}

TEST_F(SwapTest, ACutSwapOfTheFirstVersionIsCompletedOrToldOrLeftBehind) {
  const std::pair<const char*, const char*> kFiles[] = {
      {"Tarnwick.EXE", "My Updater"}, {"Tarnwick.DLL", "Tarnwick.so"}, {"Notes.htm", "Notes.htm"}};
  /// So many of the files have their names already.
  const auto prepare = [&](int moved) {
    Reset();
    program::Set({home, "My Updater", 2, 2, 5});
    std::string journal = "tarnwick swap 1\n";
    for (const auto& [name, installed] : kFiles) {
      const std::string fetched = "$" + std::string(name),
                        version = HasVersion(name) ? "2.2.5" : "2026-02-03";
      const fs::path path = home / (moved-- > 0 ? std::string(installed) : fetched);
      WriteFile(path, "#new" + SignatureLine("#new", name, version, offer.keys.secret));
      Touch(path, *ReadDate("2026-02-03"));
      journal += fetched + "\n" + installed + "\n";
    }
    WriteFile(home / "WebUpdate.journal", journal + "end\n");
    WriteFile(home / "WebUpdate.sh", "");
  };
  const auto begin = [] { return BeginProgram([](const fs::path&) { return Setback(); }).what; };
  const auto isNew = [&](const char* name) { return ReadFile(home / name).starts_with("#new"); };
  for (int moved = 0; moved < 4; ++moved) {
    const auto check = [&](Fault) {
      EXPECT_EQ(begin(), Beginning::What::Go);
      EXPECT_TRUE((moved == 0 || isNew("My Updater")) && isNew("Tarnwick.so") && isNew("Notes.htm"));
      EXPECT_THAT(Left(), ElementsAre());
    };
    EXPECT_GE(EachFault([&] { prepare(moved); }, [&] { CompleteEarlierSwap(home); }, check), 4);
  }
  for (const bool missing : {false, true}) {
    prepare(1);
    missing ? void(fs::remove(home / "$Tarnwick.DLL")) : WriteFile(home / "$Tarnwick.DLL", "#neW");
    EXPECT_EQ(begin(), Beginning::What::Failed);
    EXPECT_FALSE(isNew("Tarnwick.so") || isNew("Notes.htm"));
    WriteFile(home / "My Updater", "unpacked"), WriteFile(home / "Tarnwick.so", "unpacked");
    EXPECT_EQ(begin(), Beginning::What::Go);
    EXPECT_EQ(ReadFile(home / "Tarnwick.so"), "unpacked");
  }
}

}  // namespace
}  // namespace tarnwick::test
