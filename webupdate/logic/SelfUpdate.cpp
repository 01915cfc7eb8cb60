#include "webupdate/SelfUpdate.h"

#include <algorithm>

#include "link/LinkLibrary.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/text.h"
#include "webupdate/Journal.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

/// More files than that would make the question taller than a small screen.
constexpr int kMostNamed = 10;

bool EndsWith(std::string_view name, std::string_view ending) {
  return name.size() >= ending.size() && text::EqualNoCase(name.substr(name.size() - ending.size()), ending);
}

VersionNumbers OwnVersion() {
  const program::Identity& self = program::This();
  return {self.major, self.minor, self.revision};
}

bool IsRow(const ProgramEntry& entry, const ReleaseFile& file) {
  return entry.Name == file.name && entry.Version == file.version && entry.Size == file.size;
}

bool HasRow(const Catalogue& catalogue, const ReleaseFile& file) {
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i)
    if (IsRow(catalogue.Programs(i), file)) return true;
  return false;
}

bool IsNewer(const ProgramEntry& entry, const ReleaseFile& file) {
  if (HasVersion(entry.Name)) {
    const auto offered = ReadVersion(entry.Version);
    return offered && (IsProgramName(entry.Name) ? OwnVersion() : Link().getDllVersion()) < *offered;
  }
  const program::Identity& self = program::This();
  const auto modified = files::LastModified(self.folder / InstalledName(file, self.name));
  return !modified || DateText(*modified) < entry.Version;
}

}  // namespace

bool IsProgramName(std::string_view catalogueName) {
  return EndsWith(catalogueName, kProgramEnding);
}
bool IsLibraryName(std::string_view catalogueName) {
  return EndsWith(catalogueName, kLibraryEnding);
}
bool HasVersion(std::string_view catalogueName) {
  return IsProgramName(catalogueName) || IsLibraryName(catalogueName);
}

std::optional<Release> OfferedRelease(const Catalogue& catalogue) {
  // What the system's packages installed is theirs to renew.
  if (!TrustedKey() || program::IsInstalled()) return std::nullopt;
  auto release = ReadRelease(catalogue.Head(), *TrustedKey(), program::System());
  if (!release || *ReadVersion(release->version) < OwnVersion()) return std::nullopt;
  const auto refused = ReadRefused(program::This().folder);
  if (refused && refused->signature == release->signature) return std::nullopt;
  const auto offered = [&](const ReleaseFile& file) { return HasRow(catalogue, file); };
  return std::all_of(release->files.begin(), release->files.end(), offered) ? release : std::nullopt;
}

bool CheckForNewProgram(Catalogue& catalogue) {
  const std::optional<Release> release = OfferedRelease(catalogue);
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) catalogue.Programs(i).Newer = false;
  if (!release) return false;
  bool some = false;
  for (const ReleaseFile& file : release->files) {
    // Of rows that say the same the first one counts.
    std::int32_t row = 1;
    while (!IsRow(catalogue.Programs(row), file)) ++row;
    ProgramEntry& entry = catalogue.Programs(row);
    entry.Newer = IsNewer(entry, file);
    some = some || entry.Newer;
  }
  return some;
}

std::string UpdateQuestion(const Catalogue& catalogue) {
  std::string question = "A newer version of this program is available.\r\n\r\n";
  int newer = 0;
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const ProgramEntry& entry = catalogue.Programs(i);
    if (!entry.Newer || ++newer > kMostNamed) continue;
    question += entry.Name + (HasVersion(entry.Name) ? "  v" : "   ") + entry.Version + "\r\n";
  }
  if (newer > kMostNamed) question += "and " + std::to_string(newer - kMostNamed) + " more\r\n";
  return question + "\r\nDo you wish to download and install?";
}

}  // namespace tarnwick
