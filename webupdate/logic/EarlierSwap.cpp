#include "webupdate/EarlierSwap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/program.h"
#include "platform/text.h"
#include "webupdate/HarmlessName.h"
#include "webupdate/Release.h"
#include "webupdate/SelfUpdate.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kJournalName = "WebUpdate.journal";
constexpr std::string_view kScriptName = "WebUpdate.sh";
constexpr std::string_view kHead = "tarnwick swap 1", kEnd = "end";
constexpr std::uintmax_t kLongestJournal = 1u << 20;

struct Pair {
  std::string fetched;
  std::string installed;
};

std::optional<std::string> JournalOf(const fs::path& folder, std::error_code& error) {
  auto text = files::ReadWhole(folder / kJournalName, kLongestJournal, error);
  return text && text->starts_with(std::string(kHead) + "\n") ? text : std::nullopt;
}

/// Head, two lines a file, end. Nothing of one that is not whole or names what it may not: it was not made
/// here.
std::vector<Pair> PairsOf(std::string_view text) {
  const std::vector<std::string_view> lines = text::Split(text, '\n');
  if (lines.size() < 3 || lines.size() % 2 == 0 || lines[lines.size() - 2] != kEnd) return {};
  std::vector<Pair> pairs;
  for (std::size_t line = 1; line + 2 < lines.size(); line += 2) {
    const Pair pair{std::string(lines[line]), std::string(lines[line + 1])};
    if (!pair.fetched.starts_with('$') || !IsHarmlessName(pair.fetched) || !IsHarmlessName(pair.installed))
      return {};
    pairs.push_back(pair);
  }
  return pairs;
}

/// Whether what lies at `path` was signed as the file `name` of this release. What is there and cannot be
/// read is an error, so that nothing is concluded from it.
bool IsOfThisRelease(const fs::path& path, const std::string& name, std::error_code& error) {
  std::error_code unread;
  const auto content = files::ReadWhole(path, UINTMAX_MAX, unread);
  if (!content && unread != std::errc::no_such_file_or_directory) error = unread;
  const auto date = files::LastModified(path);
  if (!content || !date || !TrustedKey()) return false;
  const std::string version = HasVersion(name) ? program::VersionText() : DateText(*date);
  return IsSigned(*content, name, version, *TrustedKey());
}

}  // namespace

bool HasEarlierSwap(const fs::path& folder) {
  std::error_code ignored;
  return JournalOf(folder, ignored).has_value();
}

std::error_code CompleteEarlierSwap(const fs::path& folder) {
  std::error_code error;
  const auto journal = JournalOf(folder, error);
  if (!journal) return error;
  std::vector<Pair> moves;
  bool begun = false, lacking = false;
  for (const Pair& pair : PairsOf(*journal)) {
    const std::string name = pair.fetched.substr(1);
    if (IsOfThisRelease(folder / pair.fetched, name, error)) {
      moves.push_back(pair);
    } else if (HasVersion(name)) {
      (IsOfThisRelease(folder / pair.installed, name, error) ? begun : lacking) = true;
    }
  }
  if (error) return error;
  if (begun && lacking) return std::make_error_code(std::errc::no_such_file_or_directory);
  if (lacking) moves.clear();
  for (const Pair& pair : moves)
    if ((error = files::Rename(folder / pair.fetched, folder / pair.installed))) return error;
  if (files::FileExists(folder / kScriptName)) files::Remove(folder / kScriptName);
  return files::Remove(folder / kJournalName);
}

}  // namespace tarnwick
