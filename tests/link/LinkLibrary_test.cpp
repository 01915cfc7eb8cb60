#include "link/LinkLibrary.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "platform/program.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using Words = std::vector<std::int32_t>;

/// What a library answers to each call in turn: results, and behind them the words it filled.
std::vector<Words> AnswersOf(ILinkLibrary& link) {
  constexpr std::int32_t kAddress = 16;
  std::int32_t a = 0;
  std::int32_t b = 0;
  std::vector<std::int32_t> words(3);
  const auto fresh = [&](std::int32_t result) {
    return Words{result, std::exchange(a, 0), std::exchange(b, 0)};
  };
  std::vector<Words> answers;
  const auto version = link.getDllVersion();
  answers.emplace_back(version.begin(), version.end());
  link.debugFilter(4);
  link.lockHc();
  answers.push_back({link.getSerialMode(), link.initSerialCommon("COM10"), link.doTestForSkelmirra(),
                     link.doTestForUpgradeSupport()});
  answers.push_back(fresh(link.getModelCommon(kAddress, a)));
  answers.push_back(fresh(link.getMcStateCommon(kAddress, a, b)));
  answers.push_back(fresh(link.getHwRevCommon(kAddress, a)));
  answers.push_back(fresh(link.getHwRevFromBootCommon(kAddress, a)));
  answers.push_back(fresh(link.getVersionFromBootCommon(kAddress, a)));
  answers.push_back({link.readMcProgMemCommon(kAddress, 5, 7, words), words[0], words[2]});
  answers.push_back({link.enterBootCommon(kAddress), link.startProgrammingCommon(kAddress),
                     link.sendDataCommon(kAddress, Words{3, 4, 500}), link.endProgrammingCommon(kAddress)});
  return answers;
}

/// Each call's own failure result, and nothing filled.
const auto kUnusable =
    ElementsAre(Words{0, 0, 0}, Words{0, -1, 0, 1}, Words{0, 0, 0}, Words{0, 0, 0}, Words{0, 0, 0},
                Words{0, 0, 0}, Words{-1, 0, 0}, Words{0, 0, 0}, Words{0, 0, 0, 0});

class LinkLibrary : public testing::Test {
 protected:
  test::TempFolder folder;
  fs::path file = folder / "Tarnwick.so";
  const std::string stub = test::ReadFile(STUB_LIBRARY);
};

TEST_F(LinkLibrary, PassesArgumentsAndAnswersUnchanged) {
  const auto link = LoadLinkLibrary(STUB_LIBRARY);
  EXPECT_THAT(AnswersOf(*link), ElementsAre(Words{7, 8, 9}, Words{114, -5, 21, 22}, Words{17, 17, 0},
                                            Words{20, 18, 19}, Words{21, 21, 0}, Words{22, 22, 0},
                                            Words{23, 23, 0}, Words{1, 21, 23}, Words{24, 25, 516, 26}));
}

TEST_F(LinkLibrary, IsNotReadPastTheRoomForItsWords) {
  const auto link = LoadLinkLibrary(STUB_LIBRARY);
  Words words(2);
  EXPECT_EQ(link->readMcProgMemCommon(16, 0, 2, words), 0);
  EXPECT_EQ(link->readMcProgMemCommon(16, 3, 2, words), 0);
  EXPECT_EQ(link->readMcProgMemCommon(16, INT32_MIN, INT32_MAX, words), 0);
  EXPECT_EQ(words, Words({0, 0}));
}

TEST_F(LinkLibrary, IsNotUsedWhenOneExportIsMissing) {
  for (const char* name :
       {"_getDllVersion", "_debugFilter", "_initSerialCommon", "_getSerialMode", "_lockHc",
        "_doTestForSkelmirra", "_doTestForUpgradeSupport", "_getModelCommon", "_getMcStateCommon",
        "_getHwRevCommon", "_getHwRevFromBootCommon", "_getVersionFromBootCommon", "_readMcProgMemCommon",
        "_enterBootCommon", "_startProgrammingCommon", "_sendDataCommon", "_endProgrammingCommon"}) {
    std::string lacking = stub;
    const std::string entry = std::string(name) + '\0';
    std::size_t renamed = 0;
    for (std::size_t at = 0; (at = lacking.find(entry, at)) != std::string::npos; ++renamed)
      lacking[at] = 'X';
    ASSERT_GT(renamed, 0u) << name;
    test::WriteFile(file, lacking);
    EXPECT_THAT(AnswersOf(*LoadLinkLibrary(file)), kUnusable) << name;
    fs::remove(file);
  }
}

TEST_F(LinkLibrary, IsNotUsedWhenItIsMissingOrNone) {
  EXPECT_THAT(AnswersOf(*LoadLinkLibrary(file)), kUnusable);
  for (const std::string& content : {std::string(), std::string("not a library"), std::string(5000, '\0'),
                                     std::string("\x7f"
                                                 "ELF") +
                                         std::string(5000, '\xFF'),
                                     test::ReadFile("/proc/self/exe").substr(0, 4096)}) {
    test::WriteFile(file, content);
    EXPECT_THAT(AnswersOf(*LoadLinkLibrary(file)), kUnusable);
  }
  fs::remove(file);
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_THAT(AnswersOf(*LoadLinkLibrary(file)), kUnusable);
  EXPECT_THAT(AnswersOf(*LoadLinkLibrary(folder.Path())), kUnusable);
}

TEST_F(LinkLibrary, TornAnywhereKillsNothing) {
  for (std::size_t size = 0; size < stub.size(); size += 64 + stub.size() / 100) {
    const fs::path torn = folder / std::to_string(size);
    test::WriteFile(torn, stub.substr(0, size));
    const auto link = LoadLinkLibrary(torn);
    if (size < stub.size() / 4) {
      EXPECT_EQ(link->initSerialCommon("COM1"), -1) << size;
    }
  }
}

TEST_F(LinkLibrary, IsTakenFromTheProgramsFolderAtTheFirstCall) {
  program::Set({folder.Path(), "Renamed", 0, 0, 0});
  test::WriteFile(file, stub);
  EXPECT_EQ(Link().getDllVersion()[0], 7);
  EXPECT_EQ(&Link(), &Link());
}

}  // namespace
}  // namespace tarnwick
