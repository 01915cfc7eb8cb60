#include "settings/Settings.h"

#include <gmock/gmock.h>

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "platform/program.h"
#include "settings/modDebug.h"
#include "support/ClockDouble.h"
#include "support/LinkDouble.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// A program in a folder of its own, started in another one.
class Settings : public testing::Test {
 protected:
  Settings() {
    fs::current_path(start.Path());
    program::Set({folder.Path(), "Renamed", 2, 2, 4});
    fs::create_symlink(start / "precious", log);
    SetDebugEnabled(true);
    OpenDebugLog();
  }
  ~Settings() override { CloseDebugLog(), fs::current_path(fs::temp_directory_path()); }
  void Load(std::string_view content) { test::WriteFile(file, content), LoadSettings(); }
  std::string Saved() { return SaveSettings(), test::ReadFile(file); }

  test::TempFolder start, folder;
  fs::path log = start / "debugexe.txt", file = folder / "Renamed.ini";
  test::LinkDouble link;
  test::ClockDouble clock;
};

TEST_F(Settings, HaveDefaultsAtAFirstStart) {
  const std::string firstFile =
      "[TARNWICK]\r\n   COMport       =\r\n   DebugFilter4  = False\r\n   DebugFilter6  = False\r\n";
  gComPort = "COM9";
  gModelOverride = gBlockOverride = gTypeOverride = gDebugFilter4 = gDebugFilter6 = true;
  LoadSettings();
  EXPECT_FALSE(gModelOverride || gBlockOverride || gTypeOverride || gDebugFilter4 || gDebugFilter6);
  EXPECT_TRUE(gQAL && gURL == BuiltInUrl() && fs::equivalent(fs::current_path(), folder.Path()));
  EXPECT_EQ(Saved(), firstFile);
  EXPECT_EQ(link.TakeCalls(), "") << "no port, no filter: the link library is not touched";
  EXPECT_TRUE(!gQAL && fs::is_empty(log) && !FileExists(start / "precious"));
  Load("[TARNWICK]\r\nURL=" + BuiltInUrl() + "\r\n");
  EXPECT_EQ(Saved(), firstFile) << "the built-in locator is not written";
  Load("[TARNWICK]\r\nURL=\r\nTYPEOVERRIDE=True\r\nTypeOverride=1\r\n");
  EXPECT_EQ(Saved(), firstFile + "   URL           =\r\n");
}

TEST_F(Settings, AreWrittenInOrderLoggedAndTheLinkIsClosed) {
  clock.now = {7, 6, 5, 4, 2, 107, 0, 0, 0, 0, nullptr};
  Load(
      "COMPORT=COM1\r\n[other]\r\nURL=x\r\n[Tarnwick]\r\nCOMPORT=COM2\r\nDEBUGFILTER4=True\r\nunknown=1\r\n"
      "debugfilter6 = true\r\nDEBUGFILTER10=TRUE\r\nMODELOVERRIDE=true\r\nBLOCKOVERRIDE=true\r\n"
      "TYPEOVERRIDE=True\r\nURL=me:secret@Host\\p\\q\\f.txt\r\ncomport=com7\r\n[Tarnwick] x\r\nURL=y\r\n");
  EXPECT_EQ(link.TakeCalls(), "debugFilter 4;debugFilter 6;");
  DebugLog("a \xE4 % \r\n b");
  std::string lines;
  for (const char* text :
       {"gURL = me:secret@Host\\p\\q\\f.txt", "DomainUser = me", "DomainPassword = secret",
        "DomainName = Host", "DomainPath = /p/q", "DomainDir = /f.txt", "a \xE4 % \r\n b"}) {
    lines += std::string("20070304050607: ") + text + "\r\n";
  }
  EXPECT_EQ(test::ReadFile(log), lines) << "written at once";
  CloseDebugLog();
  DebugLog("closed");
  EXPECT_EQ(Saved(),
            "[TARNWICK]\r\n   COMport       = COM7\r\n   DebugFilter4  = True\r\n   DebugFilter6  = True\r\n"
            "   DebugFilter10 = True\r\n   ModelOverride = True\r\n   BlockOverride = True\r\n"
            "   TypeOverride  = True\r\n   URL           = me:secret@Host\\p\\q\\f.txt\r\n");
  EXPECT_EQ(link.TakeCalls(), "initSerial ;");
  fs::create_directory((fs::remove(file), file));
  SaveSettings();
  EXPECT_EQ(link.TakeCalls(), "initSerial ;") << "the link is closed also after a save that was lost";
}

TEST(Locator, IsSplitIntoItsParts) {
  const std::pair<const char*, const char*> kCases[] = {
      {"host/a/b/f", ", , host, /a/b, /f"},   {"host\\f", ", , host, , /f"},
      {"host/a:b@c/", ", , host, /a:b@c, /"}, {"u:p:q@r@h/f", "u, p:q, r@h, , /f"},
      {"u@host/f", ", , u@host, , /f"},       {"host:80/f", ", , host:80, , /f"},
      {"u@host:80/f", "u, , host:80, , /f"},  {"", ", , , , "}};
  for (const auto& [locator, shown] : kCases) {
    const UrlParts p = SplitUrl(locator);
    EXPECT_EQ(p.user + ", " + p.password + ", " + p.name + ", " + p.path + ", " + p.dir, shown) << locator;
  }
  EXPECT_TRUE(SplitUrl(BuiltInUrl()).name.ends_with(".example")) << BuiltInUrl();
}

}  // namespace
}  // namespace tarnwick
