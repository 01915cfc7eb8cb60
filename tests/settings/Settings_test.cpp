// The settings file, its lines and what the program makes of them.
#include "settings/Settings.h"

#include <gmock/gmock.h>

#include "app/ProgramSettings.h"
#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "platform/program.h"
#include "settings/INIfile.h"
#include "platform/modDebug.h"
#include "support/ClockDouble.h"
#include "support/FileFaults.h"
#include "support/LinkDouble.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

class Document : public testing::Test {
 protected:
  /// What a load of the file gives, each line as "group|section|value;".
  std::string Loaded() {
    std::string lines;
    ini.LoadFile(file);
    for (const auto& l : ini.INIlines()->NewEnum())
      lines += l->Group + "|" + l->Section + "|" + l->Value + ";";
    return lines;
  }
  /// What is written for one line.
  std::string Saved(std::string_view group, std::string_view section = {}, std::string_view value = {}) {
    ini.INIlines()->Clear();
    ini.INIlines()->Add(group, section, value);
    ini.SaveFile(file);
    return test::ReadFile(file);
  }

  test::TempFolder folder;
  fs::path file = folder / "Tarnwick.ini";
  INIfile ini;
};

TEST_F(Document, LoadsEachKindOfLine) {
  const std::pair<std::string_view, const char*> kCases[] = {
      {"\r\n  \t \r\n = value\r\ntext\r\n; comment\r\n", ""},
      {"[Group] ; Note\r\n\t[a=b]\t\r\n", "[GROUP] ; NOTE|[GROUP] ; NOTE|;[A=B]|[A=B]|;"},
      {"k=V\r\n[g]\r\n  k e y\t=\t a = B \r\nkey=\r\n", "|K|V;[G]|[G]|;[G]|K E Y|a = B;[G]|KEY|;"},
      {"k=1\r\nk=2\r\n; comment = kept\r\n\xE4=\xE4\r\n", "|K|1;|K|2;|; COMMENT|kept;|\xC4|\xE4;"},
      {"a\r=\n1\r\nb\nc = d\te\r\nlost=2", "|A|1;|B C|d e;"},
      {"a=1\nb=2\n", ""}};
  for (const auto& [content, lines] : kCases) {
    test::WriteFile(file, content);
    EXPECT_EQ(Loaded(), lines) << content;
  }
}

TEST_F(Document, KeepsAFileThatItCouldNotRead) {
  Saved("[g]");
  fs::resize_file(file, INIfile::kLargestFile + 1);
  EXPECT_EQ(Loaded(), "");
  EXPECT_EQ((Saved("[g]"), Saved("[h]")), "[H]\r\n");
  EXPECT_EQ(fs::file_size(folder / "Tarnwick.ini.old"), INIfile::kLargestFile + 1);
}

TEST_F(Document, IsOldOrNewWhereverASaveFailsOrIsCut) {
  const auto check = [this](test::Fault fault) {
    EXPECT_THAT(test::ReadFile(file), testing::AnyOf("[OLD]\r\n", "[NEW]\r\n"));
    if (fault == test::Fault::Kill) Saved("[g]");  // It clears away what a kill leaves beside.
    EXPECT_FALSE(fs::exists(folder / "Tarnwick.ini.new"));
  };
  EXPECT_GE(test::EachFault([this] { Saved("[old]"); }, [this] { Saved("[new]"); }, check), 12);
}

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
