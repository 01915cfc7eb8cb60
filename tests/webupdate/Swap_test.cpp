// The swap, cut at every step and run by each shell: old or new, never mixed, never missing.
#include "webupdate/Swap.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <thread>

#include "platform/files.h"
#include "platform/process.h"
#include "support/TempFolder.h"

namespace {

// What this process does to files, counted; it ends like a killed one just before the call `gCutAt`.
int gCalls = 0;
int gCutAt = 0;
std::vector<std::string>* gTrace = nullptr;

void Count(const std::string& call) {
  if (gTrace != nullptr) gTrace->push_back(call);
  if (++gCalls == gCutAt) ::_exit(9);
}

std::string LastOf(const char* path) {
  return std::filesystem::path(path).filename().string();
}

}  // namespace

extern "C" {
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
int __real_fsync(int fd);
int __wrap_rename(const char* from, const char* to);
int __wrap_unlink(const char* path);
int __wrap_fsync(int fd);
int __wrap_rename(const char* from, const char* to) {
  Count("rename " + LastOf(from) + " " + LastOf(to));
  return __real_rename(from, to);
}
int __wrap_unlink(const char* path) {
  Count("unlink " + LastOf(path));
  return __real_unlink(path);
}
int __wrap_fsync(int fd) {
  Count("fsync");
  return __real_fsync(fd);
}
}

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

const std::vector<SwapFile> kSwap{{"$P.EXE", "P"}, {"$L.DLL", "L.so"}};

class SwapTest : public testing::Test {
 protected:
  /// A program's folder in which new files wait.
  void Prepare() {
    fs::remove_all(home);
    fs::create_directories(home);
    for (const SwapFile& file : kSwap) {
      WriteFile(home / file.installed, "old");
      WriteFile(home / file.fetched, "new");
    }
    WriteFile(home / "P", "#!/bin/sh\n: >'" + (folder / "started").string() + "'\n");
    fs::copy_file(home / "P", home / "$P.EXE", fs::copy_options::overwrite_existing);
    for (const char* name : {"P", "$P.EXE"}) fs::permissions(home / name, fs::perms(0755));
    WriteFile(home / "$P.EXE", ReadFile(home / "P") + "# new\n");
  }
  static bool IsNew(const fs::path& file) {
    return ReadFile(file).ends_with("new") || ReadFile(file).ends_with("# new\n");
  }
  /// The swap completed by the next start, whatever came before; both files are of one age then.
  void ExpectWhole(const std::string& after) {
    ASSERT_TRUE(fs::exists(home / "P") && fs::exists(home / "L.so")) << after;
    EXPECT_NE(CompleteSwap(home), Unfinished::Failed) << after;
    EXPECT_EQ(IsNew(home / "P"), IsNew(home / "L.so")) << after;
    EXPECT_FALSE(fs::exists(home / "WebUpdate.journal")) << after;
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path()))
      names.push_back(fs::relative(entry.path(), folder.Path()).string());
    std::ranges::sort(names);
    return names;
  }
  TempFolder folder;
  fs::path home = folder / "a b";
};

TEST_F(SwapTest, CutAtEachStepOfTheProgramTheNextStartFindsOldOrNew) {
  std::vector<std::string> trace;
  gTrace = &trace;
  Prepare();
  trace.clear();
  EXPECT_FALSE(WriteSwap(home, kSwap));
  EXPECT_THAT(trace, ElementsAre("unlink WebUpdate.sh.new", "fsync", "rename WebUpdate.sh.new WebUpdate.sh",
                                 "fsync", "unlink WebUpdate.journal.new", "fsync",
                                 "rename WebUpdate.journal.new WebUpdate.journal", "fsync"));
  trace.clear();
  EXPECT_EQ(CompleteSwap(home), Unfinished::Completed);
  EXPECT_THAT(trace, ElementsAre("rename $P.EXE P", "fsync", "rename $L.DLL L.so", "fsync",
                                 "unlink WebUpdate.journal", "fsync", "unlink WebUpdate.sh", "fsync"));
  gTrace = nullptr;
  for (int cut = 1, status = 9; status != 0; ++cut) {
    Prepare();
    const pid_t child = ::fork();
    if (child == 0) {
      gCalls = 0, gCutAt = cut;
      WriteSwap(home, kSwap);
      CompleteSwap(home);
      ::_exit(0);
    }
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ExpectWhole("call " + std::to_string(cut));
    ASSERT_LT(cut, 20);
  }
  EXPECT_EQ(CompleteSwap(home), Unfinished::None);
}

TEST_F(SwapTest, KilledAtEachCommandOfTheScriptTheNextStartFindsOldOrNew) {
  // Commands of ours in front of the system's: the nth one kills the script before or after its work.
  const fs::path bin = folder / "bin";
  fs::create_directories(bin);
  for (const char* command : {"mv", "sync", "rm"}) {
    WriteFile(bin / command,
              "#!/bin/sh\nPATH=/usr/bin:/bin\necho >>\"$COUNT\"\n"
              "n=$(wc -l <\"$COUNT\")\n[ $n -ne \"$BEFORE\" ] || kill -9 $PPID\n" +
                  std::string("[ $n -eq \"$BEFORE\" ] || ") + command +
                  " \"$@\"\n"
                  "[ $n -ne \"$AFTER\" ] || kill -9 $PPID\n");
    fs::permissions(bin / command, fs::perms(0755));
  }
  for (const char* shell : {"dash", "bash"}) {
    for (int cut = 0; cut <= 11; ++cut) {
      Prepare();
      WriteSwap(home, kSwap);
      const std::string count = (folder / "count").string();
      fs::remove(count);
      const std::string command = "cd / && PATH='" + bin.string() + "':$PATH COUNT='" + count +
                                  "' BEFORE=" + std::to_string(cut % 2 ? cut / 2 + 1 : 0) +
                                  " AFTER=" + std::to_string(cut % 2 ? 0 : cut / 2) + " " + shell + " '" +
                                  (home / "WebUpdate.sh").string() + "' '" + home.string() + "' '" +
                                  (home / "P").string() + "' '$P.EXE' P '$L.DLL' L.so </dev/null 2>/dev/null";
      (void)!std::system(command.c_str());
      ExpectWhole(std::string(shell) + " cut " + std::to_string(cut));
      if (cut == 0) {
        EXPECT_TRUE(IsNew(home / "P"));
        for (int i = 0; i < 200 && !fs::exists(folder / "started"); ++i) ::usleep(10'000);
        EXPECT_THAT(Names(), ElementsAre("a b", "a b/L.so", "a b/P", "bin", "bin/mv", "bin/rm", "bin/sync",
                                         "count", "started"));
      }
    }
  }
}

TEST_F(SwapTest, TheScriptWaitsForTheProgramToEnd) {
  Prepare();
  int alive[2];
  ASSERT_EQ(::pipe(alive), 0);
  const pid_t program = ::fork();
  if (program == 0) {
    WriteSwap(home, kSwap);
    const bool started = StartSwap(home, kSwap, home / "P");
    char byte = started ? 'y' : 'n';
    (void)!::write(alive[1], &byte, 1);
    ::pause();
  }
  char byte = 0;
  ASSERT_EQ(::read(alive[0], &byte, 1), 1);
  EXPECT_EQ(byte, 'y');
  ::usleep(200'000);
  EXPECT_FALSE(IsNew(home / "P"));
  ::kill(program, SIGKILL);
  ::waitpid(program, nullptr, 0);
  for (int i = 0; i < 500 && fs::exists(home / "WebUpdate.sh"); ++i) ::usleep(10'000);
  EXPECT_TRUE(IsNew(home / "P") && IsNew(home / "L.so"));
  EXPECT_FALSE(fs::exists(home / "WebUpdate.journal") || fs::exists(home / "WebUpdate.sh"));
}

TEST_F(SwapTest, HostileNamesAndFoldersRunNothingAndReachNothing) {
  const std::vector<std::string> pieces{
      "$(touch X)", "`touch X`", ";touch X;", "'",    "\"", "\\", "$HOME", "&&", "|touch X", " ", "\n", "-rf",
      "*",          "?",         "\xC3\xA9",  "\xE9", "#",  "!",  "~",     "%s", "a",        "=", "{",  "("};
  std::mt19937 random(11);
  const auto hostile = [&] {
    std::string name;
    for (int part = 0; part < 4; ++part) name += pieces[random() % pieces.size()];
    return name;
  };
  for (int round = 0; round < 600; ++round) {
    home = folder / "in" / hostile();
    fs::create_directories(home);
    const std::string installed = hostile();
    const std::string fetched = "$" + hostile();
    WriteFile(home / fetched, "new");
    WriteFile(home / installed, "old");
    WriteFile(home / "WebUpdate.sh", SwapScript());
    const pid_t child = ::fork();
    if (child == 0) {
      const std::string script = home / "WebUpdate.sh";
      if (::chdir(folder.Path().c_str()) != 0 || std::freopen("/dev/null", "r", stdin) == nullptr ||
          std::freopen("/dev/null", "w", stderr) == nullptr)
        ::_exit(1);
      const char* const shell = round % 2 ? "/bin/dash" : "/bin/bash";
      ::execl(shell, shell, script.c_str(), home.c_str(), "/bin/true", fetched.c_str(), installed.c_str(),
              nullptr);
      ::_exit(1);
    }
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(ReadFile(home / installed), "new") << home << " " << installed;
    EXPECT_EQ(Names().size(), 3U) << home << " " << installed;  // in, the folder, the one file.
    fs::remove_all(folder / "in");
  }
}

}  // namespace
}  // namespace tarnwick::test
