// The built Tarnwick.so against the tarnwick-mount process over a real pseudo terminal.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <array>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/MountProcess.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

/// A copy of the library in a folder of its own, loaded.
struct Loaded {
  Loaded() {
    std::filesystem::create_directory(folder / "ports");
    std::filesystem::copy(TARNWICK_LIBRARY, folder / "Tarnwick.so");
    handle = ::dlopen((folder / "Tarnwick.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  }
  ~Loaded() {
    if (handle != nullptr) ::dlclose(handle);
  }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;

  template <class... Arguments>
  std::int32_t Call(const char* name, const char* version, Arguments... arguments) {
    void* const symbol = ::dlvsym(handle, name, version);
    if (symbol == nullptr) throw std::runtime_error(std::string(name) + "@" + version);
    return reinterpret_cast<std::int32_t (*)(Arguments...)>(symbol)(arguments...);
  }
  std::int32_t Open(const char* port) { return Call("_initSerialCommon", "4", port); }

  test::TempFolder folder;
  void* handle = nullptr;
};

/// "name@version" of each symbol that the library defines.
std::multiset<std::string> DefinedSymbols() {
  FILE* const listing = ::popen("nm -D --defined-only --with-symbol-versions " TARNWICK_LIBRARY, "r");
  std::multiset<std::string> names;
  std::array<char, 256> name{};
  while (std::fscanf(listing, "%*s %*s %255s", name.data()) == 1) {
    std::string text = name.data();
    if (const std::size_t at = text.find("@@"); at != std::string::npos) text.erase(at, 1);
    names.insert(text);
  }
  ::pclose(listing);
  return names;
}

TEST(Exports, AreExactlyTheSeventeenDecoratedNames) {
  EXPECT_EQ(DefinedSymbols(),
            (std::multiset<std::string>{
                "_getDllVersion@12", "_debugFilter@8", "_initSerialCommon@4", "_getSerialMode@0", "_lockHc@0",
                "_doTestForSkelmirra@0", "_doTestForUpgradeSupport@0", "_getModelCommon@8",
                "_getMcStateCommon@12", "_getHwRevCommon@8", "_getHwRevFromBootCommon@8",
                "_getVersionFromBootCommon@8", "_readMcProgMemCommon@16", "_enterBootCommon@4",
                "_startProgrammingCommon@4", "_sendDataCommon@12", "_endProgrammingCommon@4"}));
}

TEST(Exports, ProgramADeviceOverAPseudoTerminal) {
  Loaded library;
  ASSERT_NE(library.handle, nullptr);
  EXPECT_EQ(library.Open("COM5"), -1);
  test::MountProcess mount(TARNWICK_MOUNT, library.folder);
  ASSERT_TRUE(mount.ready.starts_with("ready /dev/pts/")) << mount.ready;
  std::int32_t major = -1;
  std::int32_t minor = -1;
  std::int32_t build = -1;
  library.Call("_getDllVersion", "12", &major, &minor, &build);
  EXPECT_TRUE(major >= 1 && build >= 0);
  ASSERT_EQ(library.Open("com5"), 0);
  EXPECT_NE(library.Call("_getSerialMode", "0"), 2);
  EXPECT_GT(library.Call("_doTestForSkelmirra", "0"), library.Call("_doTestForUpgradeSupport", "0"));
  EXPECT_EQ(library.Call("_getMcStateCommon", "12", 16, &major, &minor), 1);
  EXPECT_EQ(major * 100 + minor, 402);
  EXPECT_EQ(library.Call("_getModelCommon", "8", 16, &major), 1);
  EXPECT_NE(library.Call("_getHwRevCommon", "8", 16, &minor), 0);
  EXPECT_EQ(major * 10 + minor, 52);
  std::array<std::int32_t, 3> words{};
  EXPECT_EQ(library.Call("_readMcProgMemCommon", "16", 16, 0, 2, words.data()), 1);
  EXPECT_EQ(words, (std::array<std::int32_t, 3>{0x160A, 0x158A, 0x2F00}));

  EXPECT_EQ(library.Call("_enterBootCommon", "4", 16), 1);
  EXPECT_EQ(library.Call("_getVersionFromBootCommon", "8", 16, &major), 0);
  EXPECT_NE(library.Call("_getHwRevFromBootCommon", "8", 16, &major), 0);
  EXPECT_EQ(library.Call("_startProgrammingCommon", "4", 16), 1);
  const std::array<std::int32_t, 10> block = {0, 8, 0x5A, 0x1A, 0xA5, 0x25, 7, 0, 31, 0};
  EXPECT_EQ(library.Call("_sendDataCommon", "12", 16, 10, block.data()), 1);
  EXPECT_EQ(library.Call("_endProgrammingCommon", "4", 16), 1);
  EXPECT_EQ(library.Call("_getMcStateCommon", "12", 16, &major, &minor), 2);
  EXPECT_EQ(mount.Ask("dump 16 12"), "3FFF 3FFF 3FFF 3FFF 3FFF 3FFF 3FFF 3FFF 1A5A 25A5 0007 001F");
  EXPECT_EQ(mount.Line(), "end");
  EXPECT_EQ(mount.Ask("power"), "ok");
  EXPECT_EQ(library.Call("_getMcStateCommon", "12", 16, &major, &minor), 1);
  EXPECT_EQ(major * 100 + minor, 731);
  EXPECT_EQ(mount.End(SIGTERM), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(library.folder / "ports/COM5"));
  EXPECT_EQ(library.Call("_getMcStateCommon", "12", 16, &major, &minor), 0);
}

TEST(Exports, HoldThePortExclusivelyAndGiveItBack) {
  Loaded library;
  test::MountProcess mount(TARNWICK_MOUNT, library.folder);
  ASSERT_EQ(library.Open("COM5"), 0);
  Loaded second;  // another file, so another library with a state of its own
  std::filesystem::create_symlink(library.folder / "ports/COM5", second.folder / "ports/COM5");
  EXPECT_EQ(second.Open("COM5"), -1);
  library.Open("");
  EXPECT_EQ(second.Open("COM5"), 0);
  EXPECT_EQ(library.Open("COM5"), -1);
}

TEST(Exports, TakeNullPointersForFailures) {
  Loaded library;
  std::int32_t* const none = nullptr;
  library.Call("_getDllVersion", "12", none, none, none);
  library.Call("_debugFilter", "8", 1, 4);
  EXPECT_EQ(library.Call("_initSerialCommon", "4", static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(library.Call("_readMcProgMemCommon", "16", 16, 0, 2, none), 0);
  EXPECT_EQ(library.Call("_sendDataCommon", "12", 16, 10, none), 0);
}

}  // namespace
}  // namespace tarnwick
