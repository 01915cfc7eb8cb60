#include "firmware/PackageFolder.h"

#include <algorithm>
#include <string_view>

#include "platform/files.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// More than any note has; what is longer is no note.
constexpr std::uintmax_t kLargestNote = 1u << 20;

bool IsPackageName(std::string_view name) {
  return name.size() >= kPackageEnding.size() &&
         text::EqualNoCase(name.substr(name.size() - kPackageEnding.size()), kPackageEnding);
}

}  // namespace

std::vector<std::string> PackagesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code gone;
    std::string name = entry->path().filename().string();
    if (IsPackageName(name) && entry->is_regular_file(gone)) names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string PackageStem(const std::string& package) {
  return package.substr(0, package.size() - kPackageEnding.size());
}

fs::path FindPackage(const fs::path& folder, const std::string& name) {
  fs::path found;
  for (const std::string& package : PackagesIn(folder)) {
    const std::string stem = PackageStem(package);
    if (!text::EqualNoCase(stem, name)) continue;
    if (stem == name || found.empty()) found = folder / package;
  }
  return found;
}

fs::path NoteOf(const fs::path& package) {
  return PackageStem(package.string()) + std::string(kNoteEnding);
}

std::optional<std::string> ReadNote(const fs::path& note) {
  auto content = files::ReadWhole(note, kLargestNote);
  if (content && !content->empty() && !content->ends_with(text::kLineEnd)) *content += text::kLineEnd;
  return content;
}

}  // namespace tarnwick
