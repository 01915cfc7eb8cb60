// Packages fetched and removed, with every operation on a file failed and cut in turn: old or new, byte for
// byte, nothing but its own half left beside, and the next attempt works.
#include "webupdate/Packages.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <map>

#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"

namespace {

enum class Fault { None, Fail, Kill };
/// What becomes of the call number `gAt`, from 1.
Fault gFault = Fault::None;
int gAt = 0;
int gCalls = 0;

/// True when the call at hand fails.
bool Faulty(const std::function<void()>& half = [] {}) {
  if (++gCalls != gAt || gFault == Fault::None) return false;
  if (gFault == Fault::Kill) {
    half();
    ::raise(SIGKILL);
  }
  errno = ENOSPC;
  return true;
}

}  // namespace

// Declared here, for they are the linker's names and no header's.
#define WRAP(name, parameters, arguments)           \
  extern "C" int __real_##name parameters;          \
  extern "C" int __wrap_##name parameters;          \
  extern "C" int __wrap_##name parameters {         \
    return Faulty() ? -1 : __real_##name arguments; \
  }
WRAP(fsync, (int fd), (fd))
WRAP(fchmod, (int fd, mode_t mode), (fd, mode))
WRAP(rename, (const char* from, const char* to), (from, to))
WRAP(unlink, (const char* path), (path))
WRAP(utimensat, (int folder, const char* path, const timespec* times, int flags),
     (folder, path, times, flags))

extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return Faulty() ? -1 : __real_open(path, flags, mode);
}
extern "C" ssize_t __real_write(int fd, const void* data, size_t size);
extern "C" ssize_t __wrap_write(int fd, const void* data, size_t size);
extern "C" ssize_t __wrap_write(int fd, const void* data, size_t size) {
  return Faulty([&] { __real_write(fd, data, size / 2); }) ? -1 : __real_write(fd, data, size);
}

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;

const FileEntry kEntry{"a", "qal", "2005-03-01", 3, "new note\r\n", false, true};
const Files kOld{{"a.qal", "old package"}, {"a.txt", "old note"}};
const Files kNew{{"a.qal", "new package"}, {"a.txt", "new note\r\n"}};

class PackagesTest : public testing::Test {
 protected:
  PackagesTest() { site.replies["/a.qal"] = {kNew.at("a.qal")}; }
  void Prepare(const Files& before) {
    fs::remove_all(home);
    fs::create_directory(home);
    for (const auto& [name, content] : before) WriteFile(home / name, content);
    entry = kEntry;
    entry.Local = before.contains("a.qal");
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
  bool Remove() { return RemovePackage(home, entry); }
  /// Runs `work` with the fault at its call number `at`. False when it has not that many.
  bool Run(Fault fault, int at, const std::function<void()>& work) {
    gFault = fault;
    gAt = at;
    gCalls = 0;
    bool cut = false;
    if (fault == Fault::Kill) {
      const pid_t child = ::fork();
      if (child == 0) {
        work();
        ::_exit(0);
      }
      int status = 0;
      ::waitpid(child, &status, 0);
      cut = WIFSIGNALED(status);
    } else {
      work();
      cut = gCalls >= at;
    }
    gFault = Fault::None;
    return cut;
  }

  TempFolder folder;
  fs::path home = folder / "packages";
  UserDouble user;
  HttpDouble site;
  FileEntry entry;
};

TEST_F(PackagesTest, FailedDownloadLeavesBothFilesOld) {
  for (const Files& before : {Files{}, kOld, Files{{"a.txt", "old note"}}}) {
    int at = 1;
    for (Prepare(before); Run(Fault::Fail, at, [this] { Download(); }); Prepare(before), ++at) {
      SCOPED_TRACE(at);
      const bool told = !user.boxes.empty();
      EXPECT_EQ(Found(), told ? before : kNew);
      EXPECT_EQ(entry.Local, fs::exists(home / "a.qal"));
      if (told) {
        EXPECT_EQ(user.LastText(), "Unable to save the file a.qal\r\nNo space left on device");
      }
      EXPECT_TRUE(Download());
      EXPECT_EQ(Found(), kNew);
    }
    EXPECT_GE(at, 12);
  }
}

TEST_F(PackagesTest, KilledDownloadLeavesEachFileOldOrNew) {
  for (const Files& before : {Files{}, kOld}) {
    int at = 1;
    for (Prepare(before); Run(Fault::Kill, at, [this] { Download(); }); Prepare(before), ++at) {
      SCOPED_TRACE(at);
      Files found = Found();
      found.erase("a.qal.new");
      found.erase("a.txt.new");
      for (const auto& [name, content] : found) {
        EXPECT_TRUE(content == kNew.at(name) || content == kOld.at(name)) << name << ": " << content;
      }
      EXPECT_GE(found.size(), before.size());
      if (found["a.qal"] == kNew.at("a.qal")) {
        EXPECT_EQ(found["a.txt"], kNew.at("a.txt"));
      }
      EXPECT_TRUE(Download());
      EXPECT_EQ(Found(), kNew);
    }
    EXPECT_GE(at, 12);
  }
}

TEST_F(PackagesTest, RemovalLeavesTheListTrue) {
  for (const Fault fault : {Fault::Fail, Fault::Kill}) {
    int at = 1;
    for (Prepare(kOld); Run(fault, at, [this] { Remove(); }); Prepare(kOld), ++at) {
      SCOPED_TRACE(at);
      for (const auto& [name, content] : Found()) EXPECT_EQ(content, kOld.at(name));
      if (fault == Fault::Fail) {
        EXPECT_EQ(entry.Local, fs::exists(home / "a.qal"));
      }
      if (fault == Fault::Fail && Found() == kOld) {
        EXPECT_EQ(user.LastText(), "Unable to delete the file a.qal\r\nNo space left on device");
      }
      entry.Local = true;
      if (fs::exists(home / "a.qal")) {
        EXPECT_TRUE(Remove());
      }
      EXPECT_FALSE(entry.Local && fs::exists(home / "a.qal"));
    }
    EXPECT_GE(at, 3);
  }
  Prepare({{"A.QAL", "x"}, {"a.qal", "y"}, {"A.txt", "z"}});
  EXPECT_TRUE(Remove());
  EXPECT_TRUE(entry.Local) << "Another one of that name is there.";
  EXPECT_TRUE(Remove());
  EXPECT_FALSE(entry.Local || Remove());
  EXPECT_EQ(Found(), Files{});
}

TEST_F(PackagesTest, NothingIsWrittenWithoutAWholeAnswer) {
  const HttpReply none[] = {{"x", 404}, {"x", 200, false},      {"x", 200, true, false},
                            {""},       {"<html>Unauthorised"}, {"\r\n<!doctype html><p>Log in"}};
  for (const HttpReply& reply : none) {
    site.replies["/a.qal"] = reply;
    Prepare(kOld);
    EXPECT_FALSE(Download());
    EXPECT_EQ(Found(), kOld);
  }
  site.opens = false;
  Prepare({});
  EXPECT_FALSE(Download());
  EXPECT_TRUE(user.boxes.empty() && Found().empty());
}

}  // namespace
}  // namespace tarnwick::test
