#include "settings/modDebug.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/help.h"
#include "platform/program.h"
#include "settings/HelpTopics.h"
#include "support/ClockDouble.h"
#include "support/ReadOnlyFolder.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

class DebugLogFile : public testing::Test {
 protected:
  DebugLogFile() { fs::current_path(folder.Path()); }
  ~DebugLogFile() override {
    CloseDebugLog();
    fs::current_path(fs::temp_directory_path());
  }
  std::string Content() const { return test::ReadFile(log); }

  test::TempFolder folder;
  fs::path log = folder / "debugexe.txt";
  test::ClockDouble clock;
};

TEST_F(DebugLogFile, HoldsALineForEachTextWhileItIsOn) {
  test::WriteFile(log, "the run before");
  SetDebugEnabled(true);
  OpenDebugLog();
  EXPECT_FALSE(DebugEnabled());
  DebugLog("off");
  EXPECT_EQ(Content(), "");
  SetDebugEnabled(true);
  clock.now.tm_year = 107;
  clock.now.tm_mon = 2;
  clock.now.tm_mday = 4;
  clock.now.tm_hour = 5;
  clock.now.tm_min = 6;
  clock.now.tm_sec = 7;
  fs::current_path(fs::temp_directory_path());
  DebugLog("a \xE4 % \r\n b");
  DebugLog("");
  const std::string lines = "20070304050607: a \xE4 % \r\n b\r\n20070304050607: \r\n";
  EXPECT_EQ(Content(), lines) << "written at once";
  CloseDebugLog();
  DebugLog("closed");
  EXPECT_EQ(Content(), lines);
  EXPECT_TRUE(DebugEnabled()) << "the settings are saved after the log is closed";
}

TEST_F(DebugLogFile, IsDoneWithoutWhereItCannotBeMade) {
  test::WriteFile(log, "old");
  {
    const test::ReadOnlyFolder locked(folder.Path());
    OpenDebugLog();
    SetDebugEnabled(true);
    DebugLog("nowhere");
  }
  EXPECT_EQ(Content(), "old");
  fs::remove(log);
  fs::create_directory(log);
  OpenDebugLog();
  SetDebugEnabled(true);
  DebugLog("nowhere");
  EXPECT_TRUE(fs::is_directory(log));
}

TEST_F(DebugLogFile, IsNotWrittenThroughALink) {
  test::WriteFile(folder / "precious", "kept");
  fs::create_symlink(folder / "precious", log);
  OpenDebugLog();
  EXPECT_EQ(test::ReadFile(folder / "precious"), "kept");
  EXPECT_TRUE(FileExists(log));
  EXPECT_FALSE(fs::is_symlink(log));
}

TEST(Help, ShowsAPageOfTheProgramsFolderAndContainsFailures) {
  struct Viewer final : help::IHelpViewer {
    void Show(const fs::path& folder, std::string_view topic) override {
      shown = folder / topic;
      throw std::runtime_error("no such page");
    }
    fs::path shown;
  } viewer;
  program::Set({"/opt/mount", "Renamed", 0, 0, 0});
  ShowHelpTopic("Step1.htm");
  help::Install(viewer);
  ShowHelpTopic("Step1.htm");
  help::Uninstall();
  EXPECT_EQ(viewer.shown, "/opt/mount/help/Step1.htm");
}

}  // namespace
}  // namespace tarnwick
