#include "webupdate/SelfUpdate.h"

#include <array>
#include <optional>

#include "link/LinkLibrary.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/text.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

enum class FileKind { Program, Library, Other };

using VersionNumbers = std::array<std::int32_t, 3>;

FileKind KindOf(std::string_view name) {
  const std::string_view ending = name.size() < 4 ? std::string_view{} : name.substr(name.size() - 4);
  if (text::EqualNoCase(ending, kProgramEnding)) return FileKind::Program;
  if (text::EqualNoCase(ending, kLibraryEnding)) return FileKind::Library;
  return FileKind::Other;
}

/// The first three parts of "2.2.4"; none when there are fewer.
std::optional<VersionNumbers> ReadVersion(std::string_view version) {
  const std::vector<std::string_view> parts = text::Split(version, '.');
  if (parts.size() < 3) return std::nullopt;
  VersionNumbers numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = text::ToInt32(text::NumericPrefix(parts[i]));
  return numbers;
}

bool IsNewer(const ProgramEntry& entry) {
  const program::Identity& self = program::This();
  const FileKind kind = KindOf(entry.Name);
  if (kind != FileKind::Other) {
    const auto offered = ReadVersion(entry.Version);
    const VersionNumbers own = kind == FileKind::Program
                                   ? VersionNumbers{self.major, self.minor, self.revision}
                                   : Link().getDllVersion();
    return offered && own < *offered;
  }
  const auto modified = files::LastModified(self.folder / InstalledName(entry.Name));
  return !modified || DateText(*modified) < entry.Version;
}

}  // namespace

bool HasVersion(std::string_view catalogueName) {
  return KindOf(catalogueName) != FileKind::Other;
}

std::string InstalledName(std::string_view catalogueName) {
  const FileKind kind = KindOf(catalogueName);
  if (kind == FileKind::Other) return std::string(catalogueName);
  const std::string_view stem = catalogueName.substr(0, catalogueName.size() - 4);
  if (kind == FileKind::Library)
    return std::string(text::EqualNoCase(stem, kLinkLibraryName) ? kLinkLibraryName : stem) +
           std::string(kSharedLibraryEnding);
  return text::EqualNoCase(stem, program::This().name) ? program::Executable().filename().string()
                                                       : std::string(stem);
}

bool CheckForNewProgram(Catalogue& catalogue) {
  bool some = false;
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    ProgramEntry& entry = catalogue.Programs(i);
    entry.Newer = IsNewer(entry);
    some = some || entry.Newer;
  }
  return some;
}

std::string UpdateQuestion(const Catalogue& catalogue) {
  std::string question = "A newer version of this program is available.\r\n\r\n";
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const ProgramEntry& entry = catalogue.Programs(i);
    if (!entry.Newer) continue;
    question += entry.Name + (HasVersion(entry.Name) ? "  v" : "   ") + entry.Version + "\r\n";
  }
  return question + "\r\nDo you wish to download and install?";
}

}  // namespace tarnwick
