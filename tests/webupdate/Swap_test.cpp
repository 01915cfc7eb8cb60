// The swap, failed, cut and robbed of its power at every step: old or new, never mixed, never missing.
#include "webupdate/Swap.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/files.h"
#include "support/FileFaults.h"
#include "support/LossyDisk.h"
#include "support/SignedRelease.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using What = Settlement::What;

class SwapTest : public testing::Test {
 protected:
  SwapTest() {
    offer.Add("Tarnwick.EXE", "2.2.5", "program#new");
    offer.Add("Tarnwick.DLL", "2.2.5", "library#new");
    offer.Add("Notes.htm", "2026-02-03", "notes#new");
    offer.Add("Added.htm", "2026-02-03", "added#new");
    TrustKey(offer.keys.open);
    program::Set({home, "P", 2, 2, 4});
  }
  /// A program's folder in which a release waits.
  void Prepare() {
    fs::remove_all(home);
    fs::create_directories(home);
    for (const char* const name : {"P", "Tarnwick.so", "Notes.htm"}) WriteFile(home / name, "#old");
    fs::permissions(home / "P", fs::perms(0755));
    Journal journal;
    ASSERT_FALSE(MakeUpdateFolder(home, journal.folder));
    for (const ReleaseFile& file : offer.release.files) {
      staged = home / journal.folder;
      const fs::path path = staged / InstalledName(file, "P");
      ASSERT_FALSE(files::Create(path, offer.contents[file.name], fs::perms(0755)));
    }
    const Release read = *ReadRelease(offer.List(), offer.keys.open, program::System());
    journal.program = "P", journal.version = read.version, journal.signature = read.signature;
    journal.lists = read.lists;
    ASSERT_FALSE(WriteJournal(home, journal));
  }
  What Settle() {
    return SettleUpdate(home, "P", [this](const fs::path&) { return runs; }).what;
  }
  /// The next starts settle it, whatever came before: all files are of one release then.
  void ExpectWhole(const std::string& where) {
    SCOPED_TRACE(where);
    EXPECT_NE(Settle(), What::Failed);
    Settle();
    const std::string program = ReadFile(home / "P");
    const std::string age = program.substr(std::min(program.find('#'), program.size()));
    EXPECT_TRUE(age == "#old" || age == "#new") << program;
    for (const char* const name : {"Tarnwick.so", "Notes.htm"})
      EXPECT_TRUE(ReadFile(home / name).ends_with(age)) << name << " beside " << age;
    EXPECT_EQ(fs::exists(home / "Added.htm"), age == "#new");
    EXPECT_TRUE((fs::status(home / "P").permissions() & fs::perms::owner_exec) != fs::perms::none);
    const auto journal = ReadJournal(home);
    EXPECT_EQ(journal && journal->state == Journal::State::Moved, age == "#new" && !confirmed);
    last = age;
  }

  SignedRelease offer;
  TempFolder folder{InMemory()};
  fs::path home = folder / "a b";
  fs::path staged;
  bool runs = true;
  bool confirmed = false;
  std::string last;
};

TEST_F(SwapTest, FailedOrCutAtEachStepTheNextStartFindsOldOrNew) {
  const auto settle = [this] { Settle(); };
  EXPECT_GE(EachFault([this] { Prepare(); }, settle, [this](Fault) { ExpectWhole("forward"); }), 60);
  EXPECT_EQ(last, "#new") << "Undisturbed.";
  const auto prepare = [this] {
    Prepare();
    Settle();
  };
  const auto back = [this] { TakeBack(home); };
  EXPECT_GE(EachFault(prepare, back, [this](Fault) { ExpectWhole("back"); }), 40);
  EXPECT_EQ(last, "#old");
  EXPECT_EQ(ReadRefused(home)->version, "2.2.5");
  confirmed = true;
  const auto confirm = [this] { ConfirmUpdate(home); };
  const auto expectNew = [this](Fault) {
    ConfirmUpdate(home);
    ExpectWhole("confirm");
    EXPECT_EQ(last, "#new");
  };
  EXPECT_GE(EachFault(prepare, confirm, expectNew), 4);
}

TEST_F(SwapTest, TheProgramIsMovedLastAndPutBackFirst) {
  // So that the release before can be started at each moment in between.
  const auto moved = [](const std::vector<FileCall>& calls) {
    std::vector<std::string> names;
    for (const FileCall& call : calls)
      if (call.call == "rename" && !call.to.ends_with(".journal"))
        names.push_back(fs::path(call.to).filename());
    return names;
  };
  Prepare();
  EXPECT_THAT(moved(DoneCalls([this] { Settle(); })),
              testing::ElementsAre("Tarnwick.so", "Notes.htm", "Added.htm", "P"));
  EXPECT_THAT(moved(DoneCalls([this] { TakeBack(home); })),
              testing::ElementsAre("P", "Notes.htm", "Tarnwick.so", "WebUpdate.refused"));
}

TEST_F(SwapTest, APowerCutLeavesOldOrNewWhateverWasLost) {
  std::mt19937 random(3);
  int seen[2] = {};
  for (const bool takeBack : {false, true}) {
    for (int order = 0; order < 250; ++order) {
      Prepare();
      if (takeBack) Settle();
      LossyDisk disk(home);
      const auto calls = DoneCalls([&] { takeBack ? void(TakeBack(home)) : void(Settle()); });
      ASSERT_GT(calls.size(), 20U);
      disk.Cut(calls, random() % (calls.size() + 1), random);
      ExpectWhole((takeBack ? "back " : "forward ") + std::to_string(order));
      ++seen[last == "#new"];
    }
  }
  EXPECT_GT(seen[0], 50);
  EXPECT_GT(seen[1], 50);
}

TEST_F(SwapTest, WhatDoesNotFitTheListOnDiskIsDropped) {
  const std::function<void()> kTroubles[] = {[&] { fs::remove(staged / "P"); },
                                             [&] { fs::remove(staged / "Tarnwick.so"); },
                                             [&] { WriteFile(staged / "P", ""); },
                                             [&] { WriteFile(staged / "Tarnwick.so", "library#neW"); },
                                             [&] {
                                               program::Set({home, "P", 2, 2, 6});
                                             },
                                             [&] { TrustKey(MakeKeyPair()->open); },
                                             [&] { runs = false; }};
  for (const auto& trouble : kTroubles) {
    Prepare();
    trouble();
    EXPECT_EQ(Settle(), What::Dropped);
    TrustKey(offer.keys.open);
    ExpectWhole("dropped");
    EXPECT_EQ(last, "#old");
    EXPECT_FALSE(fs::exists(staged));
    EXPECT_EQ(ReadRefused(home).has_value(), !runs) << "One that cannot run is not offered again.";
    program::Set({home, "P", 2, 2, 4});
  }
}

TEST_F(SwapTest, WhatIsMissingIsSettledByWhatIsInstalled) {
  Prepare();
  fs::remove(staged / "Tarnwick.so");
  WriteFile(home / "Tarnwick.so", "library#new");
  EXPECT_EQ(Settle(), What::Swapped);
  ExpectWhole("installed already");
  EXPECT_EQ(last, "#new");
}

TEST_F(SwapTest, TwoThatEndedBeforeTheirFirstPageAreEnough) {
  Prepare();
  EXPECT_EQ(Settle(), What::Swapped);
  NoteAttempt(home, *ReadJournal(home));
  EXPECT_EQ(Settle(), What::Nothing);
  NoteAttempt(home, *ReadJournal(home));
  EXPECT_EQ(Settle(), What::TakenBack);
  ExpectWhole("back");
  EXPECT_EQ(last, "#old");
}

TEST_F(SwapTest, AJournalThatWasNotMadeHereMovesNothing) {
  Prepare();
  const std::string good = ReadFile(home / "WebUpdate.journal");
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    Prepare();
    std::string text = good;
    text.replace(random() % text.size(), random() % 40, random() % 2 == 0 ? "" : "../x");
    WriteFile(home / "WebUpdate.journal", text);
    Settle();
    const std::string program = ReadFile(home / "P");
    EXPECT_EQ(program.ends_with("#new"), ReadFile(home / "Tarnwick.so").ends_with("#new")) << round;
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1)
        << "Nothing outside of the folder.";
  }
}

TEST_F(SwapTest, TheScriptWaitsForTheProgramToEndStartsItAndGoes) {
  const fs::path start = folder / "$(touch X) 'new' \"one\" ;`touch Y` *";
  WriteFile(start, "#!/bin/sh\n[ -e \"${0%/*}/ended\" ] && : >\"${0%/*}/started\"\n");
  fs::permissions(start, fs::perms(0755));
  const pid_t program = ::fork();
  if (program == 0) {
    const bool waits = StartAgain(folder.Path(), start);
    ::usleep(300'000);
    if (waits && fs::exists(folder / "WebUpdate.sh")) WriteFile(folder / "ended", "");
    ::_exit(0);
  }
  ::waitpid(program, nullptr, 0);
  for (int waits = 0; !fs::exists(folder / "started") && waits < 500; ++waits) ::usleep(10'000);
  EXPECT_TRUE(fs::exists(folder / "started"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 3) << "Nothing else, no script.";
}

}  // namespace
}  // namespace tarnwick::test
