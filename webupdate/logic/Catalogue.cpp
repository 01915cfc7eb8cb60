#include "webupdate/Catalogue.h"

#include <algorithm>
#include <system_error>
#include <unordered_map>

#include "CatalogueRow.h"
#include "firmware/PackageFolder.h"
#include "platform/files.h"
#include "platform/text.h"
#include "webupdate/HarmlessName.h"
#include "webupdate/Packages.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// Of a file's name: a full stop, and three letters.
constexpr std::size_t kExtension = 4;

/// The tag of a class of device; none of the tags for a class that is not known.
char TagOf(std::int32_t deviceClass) {
  if (deviceClass == 0) return kMotorTag;
  return deviceClass == 1 ? kAccessoryTag : '\0';
}

/// What stands above the first package row.
std::string_view HeadOf(std::string_view text) {
  std::string_view rest = text;
  std::string_view line;
  std::size_t end = 0;
  while (text::NextLine(rest, line) && !IsPackageRow(text::Trim(line))) end = text.size() - rest.size();
  return text.substr(0, end);
}

/// A package of the folder that the catalogue does not know.
FileEntry LocalEntry(const fs::path& package, std::string name) {
  FileEntry entry;
  entry.Name = std::move(name);
  entry.LocalFile = package.filename().string();
  entry.Local = true;
  std::error_code gone;
  const std::uintmax_t size = fs::file_size(package, gone);
  if (!gone) entry.Size = text::ToInt32(static_cast<double>(size));
  if (const auto time = files::LastModified(package)) entry.Date = DateText(*time);
  entry.Description = ReadNote(NoteOf(package)).value_or("");
  return entry;
}

}  // namespace

void Catalogue::Load(std::string_view text, std::int32_t deviceClass) {
  mFiles.clear();
  mPrograms.clear();
  mHead.clear();
  mSkip = mCut = false;
  if (text.size() > kLongestText) return;
  mHead = HeadOf(text);
  const char ownTag = TagOf(deviceClass);
  std::string_view line;
  // What stands behind the last line end is a line too, an empty one as a rule.
  for (bool more = true; more;) {
    more = text::NextLine(text, line);
    if (!more) line = text;
    if (line.size() <= kLongestLine) TakeLine(text::Trim(line), ownTag);
  }
}

void Catalogue::TakeLine(std::string_view line, char ownTag) {
  const char tag = line.empty() ? '\0' : line.front();
  if (tag == kProgramTag) {
    TakeProgram(line);
  } else if (IsPackageRow(line)) {
    mSkip = true;
    if (tag == ownTag) TakePackage(line);
  } else if (!mSkip && !mFiles.empty()) {
    mFiles.back().Description.append(line).append(text::kLineEnd);
  }
}

void Catalogue::TakeProgram(std::string_view line) {
  const auto row = ReadCatalogueRow(line);
  if (!row) return;
  mSkip = false;
  if (ProgramCount() == kMostEntries) return;
  const std::string name(row->name);
  mPrograms.push_back({name, "$" + name, row->size, std::string(row->second), false});
}

void Catalogue::TakePackage(std::string_view line) {
  const auto row = ReadCatalogueRow(line);
  if (!row || row->name.size() <= kExtension) return;
  mCut = mCut || FileCount() == kMostEntries;
  if (mCut) return;
  const std::string_view ext = row->name.substr(row->name.size() - kExtension + 1);
  // A package and its note may not be one and the same file.
  if (text::EqualNoCase(ext, kNoteEnding.substr(1))) return;
  FileEntry entry;
  entry.Name = row->name.substr(0, row->name.size() - kExtension);
  entry.Ext = ext;
  // The row need not have a full stop there; the file that is fetched and saved has one.
  if (!IsHarmlessName(FileNameOf(entry))) return;
  entry.Date = row->second;
  entry.Size = row->size;
  entry.Remote = true;
  mSkip = false;
  mFiles.push_back(std::move(entry));
}

void Catalogue::MergeLocalFiles(const fs::path& folder) {
  std::unordered_map<std::string, std::size_t> known;  // by name in upper case; of equal ones the first
  for (std::size_t i = 0; i < mFiles.size(); ++i) known.emplace(text::Upper(mFiles[i].Name), i);
  for (std::string package : PackagesIn(folder)) {
    const auto found = known.find(text::Upper(PackageStem(package)));
    FileEntry* const entry = found == known.end() ? nullptr : &mFiles[found->second];
    if (entry != nullptr && entry->Local && package == FileNameOf(*entry))
      std::swap(package, entry->LocalFile);
    if (entry == nullptr || entry->Local) {
      mFiles.push_back(LocalEntry(folder / package, PackageStem(package)));
    } else {
      entry->Local = true;
      entry->LocalFile = std::move(package);
    }
  }
}

void Catalogue::SortFiles() {
  std::stable_sort(mFiles.begin(), mFiles.end(),
                   [](const FileEntry& a, const FileEntry& b) { return a.Name < b.Name; });
}

}  // namespace tarnwick
