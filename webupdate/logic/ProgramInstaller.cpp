#include "webupdate/ProgramInstaller.h"

#include <optional>

#include "platform/contain.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/record.h"
#include "platform/ui.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/Journal.h"
#include "webupdate/SelfUpdate.h"
#include "webupdate/Site.h"
#include "webupdate/Start.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// The folder taken alone as long as this object lives.
class FolderAlone {
 public:
  FolderAlone() : mError(ClaimFolder()) {}
  ~FolderAlone() { ShareFolder(); }
  FolderAlone(const FolderAlone&) = delete;
  FolderAlone& operator=(const FolderAlone&) = delete;
  WhyNot WhyNotAlone() const {
    if (!mError) return {};
    const bool busy = mError == std::errc::resource_unavailable_try_again;
    return {busy ? Refusal::OtherWindow : Refusal::NoLock, {}, mError};
  }

 private:
  std::error_code mError;
};

fs::path Installed(const ReleaseFile& file) {
  return program::This().folder / InstalledName(file, program::Executable().filename().string());
}

/// That of the file that is installed, else one that fits its kind.
fs::perms ModeOf(const ReleaseFile& file) {
  std::error_code error;
  const fs::file_status old = fs::status(Installed(file), error);
  const bool runs = file.kind == ReleaseFile::Kind::Program;
  if (fs::is_regular_file(old)) return old.permissions() | (runs ? fs::perms::owner_exec : fs::perms::none);
  return HasVersion(file.name) ? fs::perms(0755) : fs::perms(0644);
}

bool IsInstalled(const ReleaseFile& file) {
  const auto content = files::ReadWhole(Installed(file));
  return content && DigestOf(*content) == file.digest;
}

}  // namespace

WhyNot MayInstall() {
  return FolderAlone().WhyNotAlone();
}

std::string MayNotText(const WhyNot& why) {
  const std::string newer = "A newer version of this program is available.\r\n\r\n";
  if (why.refusal == Refusal::OtherWindow)
    return newer + "Close all other windows of this program, then open this one again to install it.";
  if (why.refusal == Refusal::NoLock)
    return newer + "It cannot be installed: the program's folder cannot be locked.\r\n" + why.cause.message();
  return "Error updating program!";
}

bool ProgramInstaller::Refuse(Refusal refusal, const std::string& file, std::error_code cause) {
  mWhy = {refusal, file, cause};
  record::Failure("update of the program", WhyNotText(mWhy));
  return false;
}

bool ProgramInstaller::InstallNewProgram(const Catalogue& catalogue) {
  const FolderAlone alone;
  mWhy = alone.WhyNotAlone();
  if (mWhy.refusal != Refusal::None) return Refuse(mWhy.refusal, {}, mWhy.cause);
  const std::optional<Release> release = OfferedRelease(catalogue);
  if (!release) return Refuse(Refusal::NoRelease);
  const fs::path& folder = program::This().folder;
  // One that waited for other windows to close has been overtaken.
  if (ReadJournal(folder)) DropJournal(folder);
  bool staged = false;
  if (!Contain([&] { staged = Stage(*release); })) Refuse(Refusal::NotSaved);
  if (staged) {
    // Before the box, so that a folder that takes no script is told in its place. It waits for this process.
    if (StartAgain(folder, program::Executable())) {
      ui::MessageBox("Program downloaded successfully ...\r\n\r\nPress Ok to Run the New Version.",
                     ui::Buttons::Ok, ui::Icon::Information);
      return true;
    }
    Refuse(Refusal::NotStarted);
    DropJournal(folder);
  }
  SweepUpdates(folder);
  return false;
}

bool ProgramInstaller::Stage(const Release& release) {
  const fs::path& folder = program::This().folder;
  Journal journal;
  if (const std::error_code error = MakeUpdateFolder(folder, journal.folder))
    return Refuse(Refusal::NotSaved, {}, error);
  mDisplay.hourglass(true);
  const bool fetched = FetchAll(release, journal.folder);
  ui::PumpEvents();
  mDisplay.hourglass(false);
  if (!fetched) return false;
  mDisplay.pacifier("Installing Program ...");
  ui::PumpEvents();
  journal.program = program::Executable().filename().string();
  journal.version = release.version;
  journal.signature = release.signature;
  journal.lists = release.lists;
  const std::error_code error = WriteJournal(folder, journal);
  return !error || Refuse(Refusal::NotSaved, {}, error);
}

bool ProgramInstaller::FetchAll(const Release& release, const std::string& staging) {
  HTTPClass http;
  http.Progress = mDisplay.progress;
  for (const ReleaseFile& file : release.files) {
    if (IsInstalled(file)) continue;
    ui::PumpEvents();
    // Without this one the others are of no use.
    if (!Fetch(http, file, staging)) return false;
  }
  return true;
}

bool ProgramInstaller::Fetch(HTTPClass& http, const ReleaseFile& file, const std::string& staging) {
  if (!OpenSite(http)) return Refuse(Refusal::NotFetched, file.name);
  mDisplay.expect(file.size);
  std::string method = "GET";
  const std::string content = http.SendRequestBinary(SitePath(file.name), method, {}, true);
  if (content.empty()) return Refuse(Refusal::NotFetched, file.name);
  if (content.size() != static_cast<std::size_t>(file.size) || DigestOf(content) != file.digest)
    return Refuse(Refusal::NotTheFile, file.name);
  const fs::path path = program::This().folder / staging / Installed(file).filename();
  if (const std::error_code error = files::Create(path, content, ModeOf(file)))
    return Refuse(Refusal::NotSaved, file.name, error);
  if (const auto date = ReadDate(file.version)) Touch(path, *date);
  return true;
}

}  // namespace tarnwick
