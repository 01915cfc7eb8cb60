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

/// True for a page, with which some networks answer in place of the site until the user has logged in.
bool IsPage(std::string_view content) {
  content.remove_prefix(std::min(content.find_first_not_of(" \t\r\n"), content.size()));
  const auto begins = [content](std::string_view tag) {
    return text::EqualNoCase(content.substr(0, tag.size()), tag);
  };
  return begins("<!DOCTYPE HTML") || begins("<HTML");
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
  } else if (oldNote) {
    files::Replace(notePath, *oldNote);
  } else {
    files::Remove(notePath);
  }
  return error;
}

bool DownloadPackage(HTTPClass& http, const fs::path& folder, FileEntry& entry) {
  if (!OpenSite(http)) return false;
  const std::string content = FetchText(http, SitePath(FileNameOf(entry)));
  if (content.empty()) return false;
  if (IsPage(content)) {
    record::Failure("fetching " + FileNameOf(entry), "a web page came in its place");
    HTTPClass::TellNoConnection();
    return false;
  }
  if (JudgeSignature(content, PackageSigners()).state == PackageSignature::State::DoesNotFit) {
    record::Failure("fetching " + FileNameOf(entry), "its signature does not fit");
    ui::MessageBox(kAltered, ui::Buttons::Ok, ui::Icon::Critical);
    return false;
  }
  const std::error_code error = SavePackage(folder, entry, content);
  if (error) TellFailure("Unable to save the file ", FileNameOf(entry), error);
  return !error;
}

bool RemovePackage(const fs::path& folder, FileEntry& entry) {
  const fs::path package = FindPackage(folder, entry.Name);
  if (package.empty()) return false;
  const fs::path note = NoteOf(package);
  if (const std::error_code error = files::Remove(package)) {
    TellFailure("Unable to delete the file ", package.filename().string(), error);
    return false;
  }
  if (files::FileExists(note)) {
    if (const std::error_code error = files::Remove(note)) {
      TellFailure("Unable to delete the file ", note.filename().string(), error);
    }
  }
  entry.Local = !FindPackage(folder, entry.Name).empty();
  return true;
}

}  // namespace tarnwick
