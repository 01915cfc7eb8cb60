#include "link/LinkLibrary.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/program.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

using Words = std::vector<std::int32_t>;

/// What a library answers to each call in turn: results, and behind each the words it filled.
Words AnswersOf(ILinkLibrary& link) {
  std::int32_t at = 16, a = 0, b = 0, c = 0, d = 0, e = 0, f = 0;
  Words w(3);
  link.debugFilter(4), link.lockHc();
  const auto version = link.getDllVersion();
  // clang-format off
  return {version[0], version[1], version[2], link.getSerialMode(), link.initSerialCommon("COM4"),
      link.doTestForSkelmirra(), link.doTestForUpgradeSupport(), link.getModelCommon(at, a), a,
      link.getMcStateCommon(at, b, c), b, c, link.getHwRevCommon(at, d), d,
      link.getHwRevFromBootCommon(at, e), e, link.getVersionFromBootCommon(at, f), f,
      link.readMcProgMemCommon(at, 5, 7, w), w[0], w[2], link.enterBootCommon(at),
      link.startProgrammingCommon(at), link.sendDataCommon(at, w), link.endProgrammingCommon(at)};
  // clang-format on
}

/// Each call's own failure result, and nothing filled.
const Words kUnusable{0, 0, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0, 0, 0, 0};

/// The answers of a library of that content.
Words AnswersOfFile(std::string_view content) {
  const test::TempFolder folder;
  test::WriteFile(folder / "Tarnwick.so", content);
  return AnswersOf(*LoadLinkLibrary(folder / "Tarnwick.so"));
}

const std::string kStub = test::ReadFile(STUB_LIBRARY);

TEST(LinkLibrary, OfTheProgramsFolderPassesArgumentsAndAnswersUnchanged) {
  program::Set({std::filesystem::path(STUB_LIBRARY).parent_path(), "Renamed", 0, 0, 0});
  EXPECT_EQ(AnswersOf(Link()), Words({7,  8,  9,  114, -5, 21, 22, 17, 17, 20, 18, 19, 21,
                                      21, 22, 22, 23,  23, 1,  21, 23, 24, 25, 39, 26}));
  Words words(2);
  for (const std::int32_t first : {0, 3, INT32_MIN}) {
    EXPECT_EQ(Link().readMcProgMemCommon(16, first, 2, words), 0) << "no room for the words from " << first;
  }
}

TEST(LinkLibrary, IsNotUsedWhenItIsMissingTornOrNone) {
  const test::TempFolder folder;
  EXPECT_EQ(AnswersOf(*LoadLinkLibrary(folder / "missing")), kUnusable);
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(AnswersOf(*LoadLinkLibrary(folder / "pipe")), kUnusable);
  EXPECT_EQ(AnswersOfFile(std::string(5000, 'x')), kUnusable);
  for (std::size_t size = 0; size < kStub.size(); size += 1 + kStub.size() / 100) {
    EXPECT_EQ(AnswersOfFile(kStub.substr(0, size)), kUnusable) << "torn at " << size;
  }
}

TEST(LinkLibrary, IsNotUsedWhenOneExportIsMissing) {
  for (const std::string name : {"_getDllVersion", "_endProgrammingCommon"}) {
    std::string lacking = kStub;
    for (std::size_t at = 0; (at = lacking.find(name, at)) != std::string::npos;) lacking[at] = 'X';
    EXPECT_EQ(AnswersOfFile(lacking), kUnusable) << name;
  }
}

}  // namespace
}  // namespace tarnwick
