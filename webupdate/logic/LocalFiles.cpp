// The catalogue and the firmware folder, brought together.
#include <string>
#include <system_error>
#include <unordered_map>

#include "firmware/PackageFolder.h"
#include "platform/files.h"
#include "platform/text.h"
#include "webupdate/Catalogue.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// A package of the folder that the catalogue does not know.
FileEntry LocalEntry(const fs::path& package, std::string name) {
  FileEntry entry;
  entry.Name = std::move(name);
  entry.Local = true;
  std::error_code gone;
  const std::uintmax_t size = fs::file_size(package, gone);
  if (!gone) entry.Size = text::ToInt32(static_cast<double>(size));
  if (const auto time = files::LastModified(package)) entry.Date = DateText(*time);
  entry.Description = ReadNote(NoteOf(package));
  return entry;
}

}  // namespace

void Catalogue::MergeLocalFiles(const fs::path& folder) {
  std::unordered_map<std::string, std::size_t> known;  // by name in upper case; of equal ones the first
  for (std::size_t i = 0; i < mFiles.size(); ++i) known.emplace(text::Upper(mFiles[i].Name), i);
  for (const std::string& package : PackagesIn(folder)) {
    std::string name = PackageStem(package);
    const auto [found, added] = known.emplace(text::Upper(name), mFiles.size());
    if (added) {
      mFiles.push_back(LocalEntry(folder / package, std::move(name)));
    } else {
      mFiles[found->second].Local = true;
    }
  }
}

}  // namespace tarnwick
