#include "settings/Settings.h"

#include <gmock/gmock.h>

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "platform/program.h"
#include "settings/INIfile.h"
#include "settings/modDebug.h"
#include "support/LinkDouble.h"
#include "support/ReadOnlyFolder.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class Settings : public testing::Test {
 protected:
  Settings() {
    program::Set({folder.Path(), "Renamed", 2, 2, 4});
    OpenDebugLog();
  }
  ~Settings() override {
    CloseDebugLog();
    fs::current_path(fs::temp_directory_path());
  }
  void Load(std::string_view content) {
    test::WriteFile(file, content);
    LoadSettings();
  }
  std::string Saved() {
    SaveSettings();
    return test::ReadFile(file);
  }

  test::TempFolder start;
  const bool moved = (fs::current_path(start.Path()), true);
  test::TempFolder folder;
  fs::path file = folder / "Renamed.ini";
  test::LinkDouble link;
};

constexpr const char* kFirstFile =
    "[TARNWICK]\r\n   COMport       =\r\n   DebugFilter4  = False\r\n   DebugFilter6  = False\r\n";

TEST_F(Settings, HaveDefaultsAtAFirstStart) {
  gComPort = "COM9";
  gModelOverride = gBlockOverride = gTypeOverride = gDebugFilter4 = gDebugFilter6 = true;
  LoadSettings();
  EXPECT_EQ(gComPort, "");
  EXPECT_FALSE(gModelOverride || gBlockOverride || gTypeOverride || gDebugFilter4 || gDebugFilter6);
  EXPECT_FALSE(DebugEnabled());
  EXPECT_EQ(gURL, gDefaultURL);
  EXPECT_EQ(gIni, nullptr);
  EXPECT_NE(gQAL, nullptr);
  EXPECT_TRUE(fs::equivalent(fs::current_path(), folder.Path()));
  EXPECT_EQ(Saved(), kFirstFile);
  EXPECT_EQ(gQAL, nullptr);
  EXPECT_EQ(gIni, nullptr);
  EXPECT_THAT(link.calls, IsEmpty()) << "no port, no filter: the link library is not touched";
}

TEST_F(Settings, AreReadBehindTheirHeaderOnlyTheLaterLineWinning) {
  Load(
      "COMPORT=COM1\r\n[other]\r\nComPort=COM2\r\nURL=x\r\n[Tarnwick]\r\ncomport = com3\r\nunknown=1\r\n"
      "comport = com4\r\n[Tarnwick] note\r\nCOMPORT=COM5\r\nURL=y\r\n");
  EXPECT_EQ(gComPort, "COM4");
  EXPECT_EQ(gURL, gDefaultURL);
}

TEST_F(Settings, AreTrueByOneWordOnly) {
  const std::pair<const char*, bool> kCases[] = {{"True", true}, {"TRUE", true},  {"true ", true},
                                                 {"1", false},   {"-1", false},   {"", false},
                                                 {"Yes", false}, {"True.", false}};
  for (const auto& [value, on] : kCases) {
    std::string content = "[TARNWICK]\r\n";
    for (const char* key : {"DebugFilter4", "DEBUGFILTER6", "debugfilter10", "ModelOverride", "BlockOverride",
                            "TypeOverride"}) {
      content += std::string(key) + "=" + value + "\r\n";
    }
    Load(content);
    for (const bool flag :
         {gDebugFilter4, gDebugFilter6, DebugEnabled(), gModelOverride, gBlockOverride, gTypeOverride}) {
      EXPECT_EQ(flag, on) << value;
    }
    EXPECT_EQ(link.calls,
              on ? std::vector<std::string>({"debugFilter 4", "debugFilter 6"}) : std::vector<std::string>());
    link.calls.clear();
  }
}

TEST_F(Settings, AreWrittenInOrderAndTheLinkIsClosed) {
  Load(
      "; "
      "gone\r\n[TARNWICK]\r\ncomport=com7\r\nDEBUGFILTER6=true\r\nDEBUGFILTER10=true\r\nMODELOVERRIDE="
      "true\r\n"
      "BLOCKOVERRIDE=true\r\nTYPEOVERRIDE=true\r\nURL=a:b@Host.example/Path/file.txt\r\n[gone]\r\n");
  CloseDebugLog();
  link.calls.clear();
  EXPECT_EQ(Saved(),
            "[TARNWICK]\r\n   COMport       = COM7\r\n   DebugFilter4  = False\r\n   DebugFilter6  = True\r\n"
            "   DebugFilter10 = True\r\n   ModelOverride = True\r\n   BlockOverride = True\r\n"
            "   TypeOverride  = True\r\n   URL           = a:b@Host.example/Path/file.txt\r\n");
  EXPECT_THAT(link.calls, ElementsAre("initSerial "));
}

TEST_F(Settings, WriteTheLocatorOnlyWhenItIsNotTheBuiltInOne) {
  Load("[TARNWICK]\r\nURL=" + BuiltInUrl() + "\r\n");
  EXPECT_EQ(Saved(), kFirstFile);
  Load("[TARNWICK]\r\nURL=\r\n");
  EXPECT_EQ(gURL, "");
  EXPECT_EQ(Saved(), std::string(kFirstFile) + "   URL           =\r\n");
}

TEST_F(Settings, AreLoggedWhenTheyHaveSwitchedTheLogOn) {
  Load("[TARNWICK]\r\nURL=me:secret@host\\p\\q\\f.txt\r\nDEBUGFILTER10=TRUE\r\n");
  std::string log = test::ReadFile(start / "debugexe.txt");
  std::vector<std::string> texts;
  for (std::size_t at = 0; at < log.size(); at = log.find("\r\n", at) + 2) {
    texts.push_back(log.substr(at + 16, log.find("\r\n", at) - at - 16));
  }
  EXPECT_THAT(texts,
              ElementsAre("gURL = me:secret@host\\p\\q\\f.txt", "DomainUser = me", "DomainPassword = secret",
                          "DomainName = host", "DomainPath = /p/q", "DomainDir = /f.txt"));
}

TEST_F(Settings, OutliveAFileThatIsUnreadableAndAFolderThatIsReadOnly) {
  fs::resize_file((test::WriteFile(file, "[TARNWICK]\r\nCOMPORT=COM1\r\n"), file), 100'000'000);
  LoadSettings();
  EXPECT_EQ(gComPort, "");
  EXPECT_EQ(Saved(), kFirstFile);
  Load("[TARNWICK]\r\nCOMPORT=COM2\r\n");
  const test::ReadOnlyFolder locked(folder.Path());
  gComPort = "COM3";
  EXPECT_EQ(Saved(), "[TARNWICK]\r\nCOMPORT=COM2\r\n");
  EXPECT_THAT(link.calls, ElementsAre("initSerial ")) << "the link is closed all the same";
}

TEST(Locator, IsSplitIntoItsParts) {
  const struct {
    const char* locator;
    const char *user, *password, *name, *path, *dir;
  } kCases[] = {
      {"host/a/b/f.txt", "", "", "host", "/a/b", "/f.txt"},
      {"host/f.txt", "", "", "host", "", "/f.txt"},
      {"host/a/", "", "", "host", "/a", "/"},
      {"host\\a/f", "", "", "host", "/a", "/f"},
      {"u:p@host/a/f", "u", "p", "host", "/a", "/f"},
      {":@host/f", "", "", "host", "", "/f"},
      {"u@host/a/f", "", "", "u@host", "/a", "/f"},
      {"host:80/a/f", "", "", "host:80", "/a", "/f"},
      {"u:p:q@r@host/f", "u", "p:q", "r@host", "", "/f"},
      {"host/a:b@c/f", "", "", "host", "/a:b@c", "/f"},
      {"u@host:80/a/f", "u", "", "host:80", "/a", "/f"},
      {"", "", "", "", "", ""},
      {"/", "", "", "", "", "/"},
      {"host", "", "", "host", "", ""},
      {"u:p@host", "u", "p", "host", "", ""},
      {"@:", "", "", ":", "", ""},
  };
  for (const auto& c : kCases) {
    const UrlParts parts = SplitUrl(c.locator);
    EXPECT_EQ(parts.user, c.user) << c.locator;
    EXPECT_EQ(parts.password, c.password) << c.locator;
    EXPECT_EQ(parts.name, c.name) << c.locator;
    EXPECT_EQ(parts.path, c.path) << c.locator;
    EXPECT_EQ(parts.dir, c.dir) << c.locator;
  }
}

TEST(Locator, IsBuiltIn) {
  const std::string url = BuiltInUrl();
  EXPECT_EQ(url.size(), 52u);
  const UrlParts parts = SplitUrl(url);
  EXPECT_TRUE(parts.name.ends_with(".example")) << parts.name;
  EXPECT_GT(parts.path.size(), 1u);
  EXPECT_GT(parts.dir.size(), 1u);
}

}  // namespace
}  // namespace tarnwick
