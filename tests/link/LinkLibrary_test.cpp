// The built Tarnwick.so as the program uses it, before a simulated mount and damaged.
#include "link/LinkLibrary.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "mount/MountProcess.h"
#include "platform/program.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::int32_t>;

/// What a library answers to each call in turn: results, and behind each the words it filled.
Words AnswersOf(ILinkLibrary& link) {
  std::int32_t at = 16, a = 0, b = 0, c = 0, d = 0, e = 0, f = 0;
  Words w(3);
  link.debugFilter(4), link.lockHc();
  const auto version = link.getDllVersion();
  // clang-format off
  return {version[0], link.initSerialCommon("com5"), link.getSerialMode(),
      link.doTestForSkelmirra(), link.doTestForUpgradeSupport(), link.getModelCommon(at, a), a,
      link.getMcStateCommon(at, b, c), b, c, link.getHwRevCommon(at, d), d,
      link.readMcProgMemCommon(at, 5, 7, w), w[0], w[2], link.enterBootCommon(at),
      link.getHwRevFromBootCommon(at, e), e, link.getVersionFromBootCommon(at, f), f,
      link.startProgrammingCommon(at), link.sendDataCommon(at, Words(4)), link.endProgrammingCommon(at)};
  // clang-format on
}

/// Each call's own failure result, and nothing filled.
const Words kUnusable{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0};

/// A folder with a copy of the library, or with other `content` in its place.
struct Copy {
  explicit Copy(std::string_view content = test::ReadFile(TARNWICK_LIBRARY)) {
    fs::create_directory(folder / "ports");
    test::WriteFile(folder / "Tarnwick.so", content);
    library = LoadLinkLibrary(folder / "Tarnwick.so");
  }
  test::TempFolder folder;
  std::unique_ptr<ILinkLibrary> library;
};

TEST(LinkLibrary, OfTheProgramsFolderPassesArgumentsAndAnswersUnchanged) {
  const Copy copy;
  mount::MountProcess mount;
  ASSERT_TRUE(mount.Start(TARNWICK_MOUNT, copy.folder / "ports/COM5",
                          {"--device", "16:model=0x109,revision=6,version=3.14"}));
  program::Set({copy.folder.Path(), "Renamed", 0, 0, 0});
  EXPECT_EQ(AnswersOf(Link()),
            Words({2, 0, 1, 1, 0, 1, 0x109, 1, 3, 14, 1, 6, 1, 0x1000 + 5 * 7, 0x1000 + 7 * 7,
                   1, 1, 6, 0, 2, 1, 1,     1}));
  const Words memory = mount.Dump(16);
  EXPECT_TRUE(memory.at(0) == 0 && memory.at(1) == 0xFFFF) << "One word is written, the others are erased.";
  Words words(2);
  for (const std::int32_t first : {0, 3, INT32_MIN}) {
    EXPECT_EQ(Link().readMcProgMemCommon(16, first, 2, words), 0) << "no room for the words from " << first;
  }
}

TEST(LinkLibrary, HoldsThePortExclusivelyAndGivesItBack) {
  const Copy first, second;  // Two files, so two libraries with a state each.
  EXPECT_EQ(first.library->initSerialCommon("COM5"), -1);
  EXPECT_EQ(first.library->doTestForUpgradeSupport(), 1) << "There is no mount that would support it.";
  mount::MountProcess mount;
  ASSERT_TRUE(mount.Start(TARNWICK_MOUNT, first.folder / "ports/COM5", {}));
  fs::create_symlink(first.folder / "ports/COM5", second.folder / "ports/COM5");
  EXPECT_EQ(first.library->initSerialCommon("COM5"), 0);
  EXPECT_EQ(second.library->initSerialCommon("COM5"), -1);
  first.library->initSerialCommon("");
  EXPECT_EQ(second.library->initSerialCommon("COM5"), 0);
  EXPECT_EQ(first.library->initSerialCommon("COM5"), -1);
  EXPECT_EQ(mount.Stop(), 0);
  EXPECT_FALSE(fs::is_symlink(first.folder / "ports/COM5"));
  EXPECT_EQ(second.library->enterBootCommon(16), 0);
}

TEST(LinkLibrary, IsNotUsedWhenItIsMissingTornOrLacksAnExport) {
  const test::TempFolder folder;
  EXPECT_EQ(AnswersOf(*LoadLinkLibrary(folder / "missing")), kUnusable);
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(AnswersOf(*LoadLinkLibrary(folder / "pipe")), kUnusable);
  EXPECT_EQ(AnswersOf(*Copy(std::string(5000, 'x')).library), kUnusable);
  const std::string whole = test::ReadFile(TARNWICK_LIBRARY);
  for (std::size_t size = 0; size < whole.size(); size += 1 + whole.size() / 100) {
    EXPECT_EQ(AnswersOf(*Copy(whole.substr(0, size)).library), kUnusable) << "torn at " << size;
  }
  for (const std::string name : {"_getDllVersion", "_endProgrammingCommon"}) {
    std::string lacking = whole;
    for (std::size_t at = 0; (at = lacking.find(name, at)) != std::string::npos;) lacking[at] = 'X';
    EXPECT_EQ(AnswersOf(*Copy(lacking).library), kUnusable) << name;
  }
}

}  // namespace
}  // namespace tarnwick
