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

#include "mount/MountProcess.h"
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

TEST(Exports, HoldThePortExclusivelyAndGiveItBack) {
  Loaded library;
  EXPECT_EQ(library.Open("COM5"), -1);
  mount::MountProcess mount;
  ASSERT_TRUE(mount.Start(TARNWICK_MOUNT, library.folder / "ports/COM5", {}));
  ASSERT_EQ(library.Open("com5"), 0);
  Loaded second;  // another file, so another library with a state of its own
  std::filesystem::create_symlink(library.folder / "ports/COM5", second.folder / "ports/COM5");
  EXPECT_EQ(second.Open("COM5"), -1);
  library.Open("");
  EXPECT_EQ(second.Open("COM5"), 0);
  EXPECT_EQ(library.Open("COM5"), -1);
  // What programming a controller of revision 2 over a direct line, as the program does it, leaves out.
  std::int32_t major = 0, minor = 0, build = -1, boot = 0;
  EXPECT_GT(second.Call("_doTestForSkelmirra", "0"), second.Call("_doTestForUpgradeSupport", "0"));
  second.Call("_getDllVersion", "12", &major, &minor, &build);
  EXPECT_TRUE(major >= 1 && build >= 0);
  EXPECT_EQ(second.Call("_enterBootCommon", "4", 16), 1);
  EXPECT_EQ(second.Call("_getMcStateCommon", "12", 16, &major, &minor), 2);
  EXPECT_EQ(second.Call("_getVersionFromBootCommon", "8", 16, &boot), 0);
  EXPECT_EQ(boot, 2);
  EXPECT_EQ(mount.Stop(), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(library.folder / "ports/COM5"));
  EXPECT_EQ(second.Call("_enterBootCommon", "4", 16), 0);
}

}  // namespace
}  // namespace tarnwick
