// What failed, as the user is told it and as the record tells it: the told boxes are few and alike, and each
// cause has a line in the record that no other cause has.
#include <gmock/gmock.h>

#include <set>

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "platform/http.h"
#include "platform/program.h"
#include "platform/record.h"
#include "programmer/Compatibility.h"
#include "programmer/ProgramDevice.h"
#include "settings/INIfile.h"
#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "support/LinkDouble.h"
#include "support/PackageText.h"
#include "support/ResetGlobals.h"
#include "support/SignedRelease.h"
#include "support/TempFolder.h"
#include "support/UnseenProgress.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/Packages.h"
#include "webupdate/Site.h"
#include "webupdate/Start.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;

const std::string kOpening = "Ok !|Error Opening COM5";
const std::string kNoTelescope = "Ok !|No Telescope found on COM5";
const std::string kNoSite =
    "Ok !|Unable to connect to the Halcyrion download site.\r\n"
    "Check your Internet connection and firewall settings.\r\nSee Help for more details.";
const std::string kRefusedBySite =
    "Ok !|Unable to connect to the Halcyrion download site.\r\nUser is Unauthorised!\r\n"
    "See Help for more details.";

/// A link library that opens with this result and tells this of its line.
struct NotingLink final : LinkDouble {
  std::string getLinkNote() override { return note; }
  std::string note;
};

/// One failure: how it is brought about, the box that is told, and words of its line in the record.
struct Case {
  std::string name;
  std::function<void()> play;
  std::string box;  ///< Empty where the user is told nothing in a box.
  std::string words;
};

class Causes : public testing::Test {
 protected:
  Causes() {
    ResetGlobals();
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    fs::create_directory(folder / "ports");
    fs::create_directory(folder / "firmware");
    gComPort = "COM5";
    DomainName = "site.example";
    record::Open(folder.Path());
  }
  ~Causes() override {
    record::Close();
    Seam<ILinkLibrary>::Uninstall();
  }

  /// The line of the record that this failure added; empty when it added none, or more than one.
  std::string LineOf(const Case& each) {
    const std::size_t before = ReadFile(folder / "Tarnwick.log").size();
    each.play();
    const std::string added = ReadFile(folder / "Tarnwick.log").substr(before);
    const std::size_t at = added.find(" failed: ");
    if (at == std::string::npos || added.find(" failed: ", at + 1) != std::string::npos) return {};
    return added.substr(at, added.find('\n', at) - at);
  }

  /// Opens the port by the library with that content; `lead` is where the port leads.
  void OpenBy(const std::string& library, const fs::path& lead) {
    fs::remove(folder / "ports/COM5");
    fs::create_symlink(lead, folder / "ports/COM5");
    fs::remove(folder / "Tarnwick.so");
    if (!library.empty()) WriteFile(folder / "Tarnwick.so", library);
    record::Close();  // What loading the library tells is told again by the opening.
    mLibrary = LoadLinkLibrary(folder / "Tarnwick.so");
    record::Open(folder.Path());
    Seam<ILinkLibrary>::Install(*mLibrary);
    OpenConnection();
  }
  void OpenWith(std::int32_t result, const std::string& note) {
    NotingLink link;
    link.openResult = result;
    link.note = note.empty() ? "" : "cause: " + note + "\n";
    OpenConnection();
  }
  void ProgramWith(const char* call, const std::string& note) {
    NotingLink link;
    link.note = note;
    link.devices[16] = {.state = 2, .bootHwRev = 2};
    SetupDevices(0);
    gQAL->LoadQALfile({}, PackageText(5, "", {{"Azm", 16, CountedWords(3)}}));
    MatchPackageDevices();
    RefreshDevices();
    link.Fail(call, 1);
    user.answers = {ui::Answer::No};
    UnseenProgress progress;
    ProgramDevice(1, "Programming: ", progress);
  }
  void Load(const std::string& text) {
    WriteFile(folder / "firmware/a.qal", text);
    gQAL->LoadQALfile(folder / "firmware/a.qal");
  }
  void Fetch(std::int32_t status, http::Failure failure, const std::string& missing = {}) {
    HttpDouble site;
    site.missing = missing;
    site.status = status;
    site.failure = failure;
    HTTPClass client;
    if (OpenSite(client)) FetchText(client, "/list.txt");
  }
  void Save(const char* inTheWay) {
    fs::create_directories(folder / inTheWay);
    HttpDouble site;
    site.replies["/b.qal"] = "FILEVER=11\r\n";
    FileEntry entry;
    entry.Name = "b", entry.Ext = "qal", entry.Remote = true;
    HTTPClass client;
    DownloadPackage(client, folder / "firmware", entry);
    fs::remove_all((folder / inTheWay).parent_path());
  }

  /// A release that waits, with something done to it, and a trial that says this; then the next start.
  void Settle(const std::function<void(Journal&, const fs::path& staging)>& change, Setback tried = {}) {
    SignedRelease offer;
    TrustKey(offer.keys.open);
    offer.Add("Tarnwick.EXE", "2.2.5", "program");
    offer.Add("Tarnwick.DLL", "2.2.5", "library");
    Journal journal;
    EXPECT_FALSE(MakeUpdateFolder(folder.Path(), journal.folder));
    const fs::path staging = folder / journal.folder;
    WriteFile(staging / "Tarnwick", "program");
    WriteFile(staging / "Tarnwick.so", "library");
    journal.program = "Tarnwick", journal.lists = offer.List();
    change(journal, staging);
    EXPECT_FALSE(WriteJournal(folder.Path(), journal));
    BeginProgram([&](const fs::path&) { return tried; });
    DropJournal(folder.Path());
    for (const char* const left : {"WebUpdate.lock", "WebUpdate.refused", "Tarnwick.so"})
      fs::remove_all(folder / left);
  }

  std::vector<Case> Ports();
  std::vector<Case> Lines();
  std::vector<Case> Packages();
  std::vector<Case> Web();
  std::vector<Case> Updates();

  TempFolder folder;
  UserDouble user;

 private:
  std::unique_ptr<ILinkLibrary> mLibrary;
};

std::vector<Case> Causes::Ports() {
  const std::string whole = ReadFile(TARNWICK_LIBRARY);
  std::string lacking = whole;
  for (std::size_t at = 0; (at = lacking.find("_lockHc", at)) != std::string::npos;) lacking[at] = 'X';
  return {
      {"no such port", [=, this] { OpenBy(whole, "/no/such/device"); }, kOpening,
       "No such file or directory"},
      {"no terminal", [=, this] { OpenBy(whole, "/dev/null"); }, kOpening, "Inappropriate ioctl"},
      {"no permission", [this] { OpenWith(-1, "the port cannot be opened: Permission denied"); }, kOpening,
       "Permission denied"},
      {"held by another", [this] { OpenWith(-1, "the port cannot be opened: Device or resource busy"); },
       kOpening, "resource busy"},
      {"no library", [this] { OpenBy("", "/dev/null"); }, kOpening, "there is no such file"},
      {"torn library", [=, this] { OpenBy(whole.substr(0, whole.size() / 2), "/dev/null"); }, kOpening,
       "shorter than it says"},
      {"text for a library", [this] { OpenBy(std::string(5000, 'x'), "/dev/null"); }, kOpening,
       "cannot be used"},
      {"library without an export", [=, this] { OpenBy(lacking, "/dev/null"); }, kOpening, "_lockHc@0"},
      {"silence", [this] { OpenWith(-2, ""); }, kNoTelescope, "Not one byte came back"},
      {"noise", [this] { OpenWith(-3, ""); }, kNoTelescope, "no mount sends"},
      {"echo", [this] { OpenWith(-4, ""); }, kNoTelescope, "two adapters joined, or a loop-back plug"},
      {"wrong answers", [this] { OpenWith(-5, ""); }, kNoTelescope, "not to our questions"},
      {"other protocol", [this] { OpenWith(-6, ""); }, kNoTelescope, "another version of the protocol"},
      {"line that goes", [this] { OpenWith(-7, "the line went: Input/output error"); }, kNoTelescope,
       "Input/output error"},
      {"poor line", [this] { OpenWith(-8, ""); }, kNoTelescope, "too seldom"},
      {"untold result", [this] { OpenWith(-9, ""); }, "", "result -9"},
  };
}

std::vector<Case> Causes::Lines() {
  const std::string error =
      "YesNo X|An Error occurred Programming Data at Address: 0\r\n\r\nIt is highly recommended to Restart "
      "Programming of this device\r\n\r\nWould you like to Restart Programming?";
  return {
      {"line that goes in a block",
       [this] { ProgramWith("sendData", "cause: the line went: No such device\n"); }, error,
       "writing word 0: the line went: No such device"},
      {"block that is refused", [this] { ProgramWith("sendData", ""); }, error,
       "writing word 0: the device refused"},
      {"start that is refused", [this] { ProgramWith("startProgramming", ""); },
       "Ok !|Unable to start programming.", "Unable to start programming"},
      {"end that is refused", [this] { ProgramWith("endProgramming", ""); },
       "Ok !|Unable to end programming.", "Unable to end programming"},
      {"boot loader that is silent", [this] { ProgramWith("getHwRevFromBoot", ""); },
       "Ok !|Unable to enter boot.", "Unable to enter boot"},
  };
}

std::vector<Case> Causes::Packages() {
  const std::string whole = PackageText(5, "", {{"Azm", 16, CountedWords(3)}});
  const auto with = [=](const std::string& line) { return whole + line + "\r\n"; };
  const auto load = [this](const std::string& text) { return [=, this] { Load(text); }; };
  return {
      {"no package", [this] { gQAL->LoadQALfile(folder / "gone.qal"); }, "", "gone.qal: No such file"},
      {"folder for a package", [this] { gQAL->LoadQALfile(folder / "ports"); }, "", "no ordinary file"},
      {"package that changes", [] { gQAL->LoadQALfile("/proc/self/status"); }, "",
       "changed while it was read"},
      {"package below a file", [this] { gQAL->LoadQALfile(folder / "Tarnwick.log/a.qal"); }, "",
       "Not a directory"},
      {"checksum", load(with(":00000001FE")), "", "CheckSum"},
      {"no data", load("DEVICE_ADDRESS_VERSION=Azm, 16, A_0100\r\n"), "", "No Data Found"},
      {"no end", load(with("END_HEX=B")), "", "No Matching END_HEX"},
      {"folder in the way of a package", [this] { Save("firmware/b.qal/x"); },
       "Ok !|Unable to save the file b.qal\r\nOperation not permitted", "b.qal: Operation not permitted"},
      {"no folder for a package",
       [this] {
         fs::rename(folder / "firmware", folder / "elsewhere");
         Save("in/the way");
       },
       "Ok !|Unable to save the file b.qal\r\nNo such file or directory", "b.qal: No such file"},
      {"folder in the way of the settings",
       [this] {
         fs::create_directories(folder / "x.ini");
         INIfile().SaveFile(folder / "x.ini");
       },
       "", "saving the settings"},
  };
}

std::vector<Case> Causes::Web() {
  using http::Failure;
  const auto fetch = [this](std::int32_t status, Failure failure) {
    return [=, this] { Fetch(status, failure); };
  };
  return {
      {"no libcurl", [this] { Fetch(0, Failure::None, "libcurl.so.4: cannot open"); }, "", "libcurl.so.4"},
      {"site whose user has an @",
       [this] {
         DomainName = "ss@site.example";
         Fetch(502, Failure::None);
         DomainName = "site.example";
       },
       kNoSite, "failed: fetching site.example/list.txt: server error: status 502"},
      {"refused", fetch(403, Failure::None), kRefusedBySite, "refused: status 403"},
      {"not found", fetch(404, Failure::None), kNoSite, "not found: status 404"},
      {"server error", fetch(500, Failure::None), kNoSite, "server error: status 500"},
      {"no name", fetch(0, Failure::NoName), kNoSite, "no name: "},
      {"no connection", fetch(0, Failure::NoConnection), kNoSite, "no connection: "},
      {"too slow", fetch(0, Failure::TooSlow), kNoSite, "too slow: "},
      {"broken off", fetch(200, Failure::BrokenOff), kNoSite, "broken off: "},
      {"too large", fetch(200, Failure::TooLarge), kNoSite, "too large: "},
      {"packed", fetch(200, Failure::Packed), kNoSite, "packed: "},
  };
}

std::vector<Case> Causes::Updates() {
  using Kind = Setback::Kind;
  using State = Journal::State;
  const auto settle = [this](std::function<void(Journal&, const fs::path&)> change, Setback tried = {}) {
    return [=, this] { Settle(change, tried); };
  };
  const auto trial = [=](Kind kind) { return settle([](auto&, auto&) {}, {kind}); };
  return {
      {"list of somebody else", settle([](auto&, auto&) { TrustKey(MakeKeyPair()->open); }), "",
       "not installed: the list is not signed"},
      {"fetched file that is gone", settle([](auto&, auto& staging) { fs::remove(staging / "Tarnwick.so"); }),
       "", "neither installed nor fetched: Tarnwick.so"},
      {"other file", settle([](auto&, auto& staging) { WriteFile(staging / "Tarnwick", "proGram"); }), "",
       "not the file that the list names: Tarnwick"},
      {"older release",
       [=, this] {
         program::Set({folder.Path(), "Tarnwick", 2, 2, 6});
         settle([](auto&, auto&) {})();
         program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
       },
       "", "older than this program"},
      {"release that cannot run", trial(Kind::CannotRun), "", "does not run on this computer"},
      {"release that was not tried", trial(Kind::NotTried), "", "could not be found out"},
      {"folder in the way of a file",
       settle([this](auto&, auto&) { fs::create_directory(folder / "Tarnwick.so"); }), "",
       "not read, written or moved: Tarnwick.so: It is no ordinary file"},
      {"no way back", settle([](Journal& journal, auto&) {
         journal.state = State::Back, journal.old = {{"Tarnwick.so", "a"}};
       }),
       "", "the copy of the old file is gone: Tarnwick.so: No such file"},
      {"journal that cannot be read",
       [this] {
         fs::create_symlink("WebUpdate.journal", folder / "WebUpdate.journal");
         BeginProgram([](const fs::path&) { return Setback(); });
         fs::remove(folder / "WebUpdate.journal");
       },
       "", "Too many levels of symbolic links"},
  };
}

TEST_F(Causes, EachHasItsToldBoxAndALineOfItsOwnInTheRecord) {
  std::vector<Case> cases;
  for (const auto& part : {Ports(), Lines(), Packages(), Web(), Updates()})
    cases.insert(cases.end(), part.begin(), part.end());
  EXPECT_GE(cases.size(), 30U);
  std::set<std::string> lines;
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    const std::string line = LineOf(each);
    const std::vector<std::string> said = user.Said();
    EXPECT_EQ(said.empty() ? "" : said.front(), each.box);
    EXPECT_THAT(line, testing::HasSubstr(each.words));
    EXPECT_TRUE(lines.insert(line).second) << "Another failure has this line: " << line;
  }
}

TEST_F(Causes, TheRecordKeepsNoSecretAndStaysWithinItsBounds) {
  DomainUser = "me";
  DomainPassword = "secret";
  Fetch(401, http::Failure::None);
  record::Line(std::string(record::kLongestLine + 1, 'x') + "\r\n\tand more");
  EXPECT_THAT(ReadFile(folder / "Tarnwick.log"), testing::Not(testing::HasSubstr("secret")));
  EXPECT_TRUE(ReadFile(folder / "Tarnwick.log").ends_with("xxx...\n"));
  for (int i = 0; i < 100; ++i) record::Line(std::string(record::kLongestLine, 'y'));
  EXPECT_LE(fs::file_size(folder / "Tarnwick.log"), record::kLargest);
  EXPECT_THAT(ReadFile(folder / "Tarnwick.old.log"), testing::HasSubstr("status 401"));
  const std::string victim = ReadFile(folder / "Tarnwick.old.log");
  fs::remove(folder / "Tarnwick.log");
  fs::create_symlink(folder / "Tarnwick.old.log", folder / "Tarnwick.log");
  record::Line("into somebody else's file");
  EXPECT_EQ(ReadFile(folder / "Tarnwick.old.log"), victim);
}

}  // namespace
}  // namespace tarnwick::test
