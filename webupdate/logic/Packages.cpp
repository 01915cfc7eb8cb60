#include "webupdate/Packages.h"

#include <algorithm>
#include <optional>

#include "firmware/PackageFolder.h"
#include "platform/files.h"
#include "platform/record.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/PackageSignature.h"
#include "webupdate/Site.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAltered =
    "The signature of this package does not fit. It may have been altered on its way.\r\n"
    "It was not saved.";

void TellFailure(const std::string& what, const std::string& file, const std::error_code& error) {
  record::Failure(what + file, error);
  ui::MessageBox(what + file + "\r\n" + error.message());
}

/// Refuses a package whose signature does not fit.
bool AcceptContent(std::string_view content, const std::string& name) {
  if (JudgeSignature(content, PackageSigners()).state != PackageSignature::State::DoesNotFit) return true;
  record::Failure("fetching " + name, "its signature does not fit");
  ui::MessageBox(kAltered, ui::Buttons::Ok, ui::Icon::Critical);
  return false;
}

/// Whether a package of the folder has that note.
bool HasOwner(const fs::path& folder, const fs::path& note) {
  const auto packages = PackagesIn(folder);
  return std::any_of(packages.begin(), packages.end(),
                     [&](const std::string& package) { return NoteOf(folder / package) == note; });
}

}  // namespace

std::string FileNameOf(const FileEntry& entry) {
  return entry.Name + "." + entry.Ext;
}

std::error_code SavePackage(const fs::path& folder, FileEntry& entry, std::string_view content) {
  const fs::path packagePath = folder / FileNameOf(entry);
  const fs::path notePath = NoteOf(packagePath);
  const std::optional<std::string> oldNote = files::ReadWhole(notePath);
  files::Staged package(packagePath);
  files::Staged note(notePath);
  if (const std::error_code error = package.Write(content)) return error;
  if (const std::error_code error = note.Write(entry.Description)) return error;
  if (const auto date = ReadDate(entry.Date)) {
    Touch(package.Beside(), *date);
    Touch(note.Beside(), *date);
  }
  if (const std::error_code error = note.Commit()) return error;
  const std::error_code error = package.Commit();
  if (!error) {
    entry.Local = true;
    entry.LocalFile = FileNameOf(entry);
  } else if (oldNote) {
    files::Replace(notePath, *oldNote);
  } else {
    files::Remove(notePath);
  }
  return error;
}

bool BringPackage(const fs::path& folder, const fs::path& path) {
  constexpr std::uintmax_t kLargest = 64 << 20;
  const fs::path wanted = folder / path.filename();
  const std::string name = path.filename().string();
  std::error_code error;
  if (fs::equivalent(path, wanted, error)) return true;
  const auto content = files::ReadWhole(path, kLargest, error);
  if (!content) return TellFailure("Unable to read the file ", name, error), false;
  if (!AcceptContent(*content, name)) return false;
  const bool there = files::FileExists(wanted);
  if (there && ui::MessageBox(name + " is in your folder already.\r\nReplace it?", ui::Buttons::YesNo,
                              ui::Icon::Question) != ui::Answer::Yes) {
    return false;
  }
  error = files::Replace(wanted, *content);
  if (error) return TellFailure("Unable to save the file ", name, error), false;
  if (there && files::FileExists(NoteOf(wanted))) files::Remove(NoteOf(wanted));
  return true;
}

bool DownloadPackage(HTTPClass& http, const fs::path& folder, FileEntry& entry) {
  if (!OpenSite(http)) return false;
  const std::string content = FetchText(http, SitePath(FileNameOf(entry)));
  if (content.empty()) return false;
  if (!AcceptContent(content, FileNameOf(entry))) return false;
  const std::error_code error = SavePackage(folder, entry, content);
  if (error) TellFailure("Unable to save the file ", FileNameOf(entry), error);
  return !error;
}

bool RemovePackage(const fs::path& folder, FileEntry& entry) {
  const fs::path package = folder / entry.LocalFile;
  if (entry.LocalFile.empty() || !files::FileExists(package)) return false;
  const fs::path note = NoteOf(package);
  if (const std::error_code error = files::Remove(package)) {
    TellFailure("Unable to delete the file ", package.filename().string(), error);
    return false;
  }
  entry.Local = false;
  entry.LocalFile.clear();
  if (!files::FileExists(note) || HasOwner(folder, note)) return true;
  if (const std::error_code error = files::Remove(note)) {
    TellFailure("Unable to delete the file ", note.filename().string(), error);
  }
  return true;
}

}  // namespace tarnwick
