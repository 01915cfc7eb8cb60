// The swap, failed and cut at every step and run by each shell: old or new, never mixed, never missing.
#include "webupdate/Swap.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "support/FileFaults.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

const std::vector<SwapFile> kSwap{{"$P.EXE", "P"}, {"$L.DLL", "L.so"}};
constexpr const char* kShells[] = {"/bin/dash", "/bin/bash"};

class SwapTest : public testing::Test {
 protected:
  /// A program's folder in which new files wait.
  void Prepare() {
    fs::remove_all(home);
    fs::create_directories(home);
    for (const SwapFile& file : kSwap) {
      WriteFile(home / file.installed, "old");
      WriteFile(home / file.fetched, "#new");
    }
  }
  bool IsNew(const char* name) const { return ReadFile(home / name).ends_with("#new"); }
  /// The swap completed by the next start, whatever came before; both files are of one age then.
  void ExpectWhole() const {
    ASSERT_TRUE(fs::exists(home / "P") && fs::exists(home / "L.so"));
    EXPECT_NE(CompleteSwap(home), Unfinished::Failed);
    EXPECT_EQ(IsNew("P"), IsNew("L.so"));
    EXPECT_FALSE(fs::exists(home / "WebUpdate.journal"));
  }
  /// Runs the script by `shell` in the folder above `home`, to its end.
  void RunScript(const char* shell, const SwapFile& a, const SwapFile& b) const {
    const std::string script = home / "WebUpdate.sh";
    const pid_t child = ::fork();
    if (child == 0) {
      ::setenv("PATH", ((home / "bin").string() + ":" + ::getenv("PATH")).c_str(), 1);
      if (::chdir(folder.Path().c_str()) == 0 && std::freopen("/dev/null", "r", stdin) != nullptr &&
          std::freopen("/dev/null", "w", stderr) != nullptr)
        ::execl(shell, shell, script.c_str(), home.c_str(), "/bin/true", a.fetched.c_str(),
                a.installed.c_str(), b.fetched.c_str(), b.installed.c_str(), nullptr);
      ::_exit(1);
    }
    ::waitpid(child, nullptr, 0);
  }
  TempFolder folder;
  fs::path home = folder / "a b";
};

TEST_F(SwapTest, FailedOrCutAtEachStepOfTheProgramTheNextStartFindsOldOrNew) {
  Prepare();
  EXPECT_THAT(FileCalls([this] { EXPECT_FALSE(WriteSwap(home, kSwap)); }),
              ElementsAre("unlink WebUpdate.sh.new", "fsync", "rename WebUpdate.sh.new WebUpdate.sh", "fsync",
                          "unlink WebUpdate.journal.new", "fsync",
                          "rename WebUpdate.journal.new WebUpdate.journal", "fsync"));
  EXPECT_THAT(FileCalls([this] { EXPECT_EQ(CompleteSwap(home), Unfinished::Completed); }),
              ElementsAre("rename $P.EXE P", "fsync", "rename $L.DLL L.so", "fsync",
                          "unlink WebUpdate.journal", "fsync", "unlink WebUpdate.sh", "fsync"));
  const auto swap = [this] { WriteSwap(home, kSwap) ? Unfinished::None : CompleteSwap(home); };
  EXPECT_GE(EachFault([this] { Prepare(); }, swap, [this](Fault) { ExpectWhole(); }), 40);
  EXPECT_EQ(CompleteSwap(home), Unfinished::None);
}

TEST_F(SwapTest, AJournalThatWasNotMadeHereMovesNothing) {
  for (const char* const body :
       {"", "1\n", "1\n$P.EXE\nP\n", "1\n$P.EXE\nend\n", "2\n$P.EXE\nP\nend\n", "1\n$P.EXE\n../P\nend\n",
        "1\nL.so\nP\nend\n", "1\n$../P\nP\nend\n", "1\n$P.EXE\nP\n$L.DLL\n/L\nend\n", "1\n$P.EXE\nP\nend"}) {
    Prepare();
    WriteFile(home / "WebUpdate.journal", std::string("tarnwick swap ") + body);
    EXPECT_EQ(CompleteSwap(home), Unfinished::None) << body;
    EXPECT_FALSE(IsNew("P") || IsNew("L.so") || IsNew("../P") || !fs::exists(home / "L.so")) << body;
  }
}

TEST_F(SwapTest, KilledBeforeEachCommandOfTheScriptTheNextStartFindsOldOrNew) {
  for (const char* const shell : kShells) {
    for (int cut = 1; cut <= 6; ++cut) {
      Prepare();
      WriteSwap(home, kSwap);
      // In front of the system's commands ours, of which the one number `cut` kills the script.
      fs::create_directory(home / "bin");
      for (const char* const command : {"mv", "sync", "rm"}) {
        WriteFile(home / "bin" / command,
                  "#!/bin/sh\ncount=${0%/*}/count\necho >>\"$count\"\n[ $(wc -l <\"$count\") -ne " +
                      std::to_string(cut) + " ] || { kill -9 $PPID; exit; }\n" +
                      "PATH=${PATH#*:}\nexec \"${0##*/}\" \"$@\"\n");
        fs::permissions(home / "bin" / command, fs::perms(0755));
      }
      RunScript(shell, kSwap[0], kSwap[1]);
      SCOPED_TRACE(std::string(shell) + " cut " + std::to_string(cut));
      EXPECT_EQ(fs::exists(home / "WebUpdate.sh") || fs::exists(home / "WebUpdate.journal"), cut < 6);
      ExpectWhole();
    }
    EXPECT_TRUE(IsNew("P"));
  }
}

TEST_F(SwapTest, TheScriptWaitsForTheProgramToEndAndStartsTheNewOne) {
  Prepare();
  WriteFile(home / "new one", "#!/bin/sh\ncd \"${0%/*}\" && [ -e ended ] && grep new P && : >started\n");
  fs::permissions(home / "new one", fs::perms(0755));
  WriteSwap(home, kSwap);
  const pid_t program = ::fork();
  if (program == 0) {
    StartSwap(home, kSwap, home / "new one");
    ::usleep(300'000);
    if (!IsNew("P") && !IsNew("L.so")) WriteFile(home / "ended", "");
    ::_exit(0);
  }
  ::waitpid(program, nullptr, 0);
  for (int waits = 0; !fs::exists(home / "started") && waits < 500; ++waits) ::usleep(10'000);
  EXPECT_TRUE(fs::exists(home / "started") && IsNew("L.so"));
}

TEST_F(SwapTest, HostileNamesAndFoldersRunNothingAndReachNothing) {
  const std::vector<std::string> pieces{
      "$(touch X)", "`touch X`", ";touch X;", "'",    "\"", "\\", "$HOME", "&&", "|touch X", " ", "\n", "-rf",
      "*",          "?",         "\xC3\xA9",  "\xE9", "#",  "!",  "~",     "%s", "a",        "=", "{",  "("};
  std::mt19937 random(11);
  const auto hostile = [&](std::string name) {
    for (int part = 0; part < 4; ++part) name += pieces[random() % pieces.size()];
    return name;
  };
  for (int round = 0; round < 300; ++round) {
    home = folder / "in" / hostile("");
    fs::create_directories(home);
    const SwapFile files[] = {{hostile("$1"), hostile("")}, {hostile("$2"), hostile("-")}};
    for (const SwapFile& file : files) {
      WriteFile(home / file.fetched, "#new");
      WriteFile(home / file.installed, "old");
    }
    WriteFile(home / "WebUpdate.sh", SwapScript());
    RunScript(kShells[round % 2], files[0], files[1]);
    for (const SwapFile& file : files) EXPECT_TRUE(IsNew(file.installed.c_str())) << home << file.installed;
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(folder.Path()), {}), 4)
        << home << " in its folder, with two files";
    fs::remove_all(folder / "in");
  }
}

}  // namespace
}  // namespace tarnwick::test
