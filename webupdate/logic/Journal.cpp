#include "webupdate/Journal.h"

#include <algorithm>
#include <array>

#include "platform/files.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kJournalName = "WebUpdate.journal";
constexpr std::string_view kRefusedName = "WebUpdate.refused";
constexpr std::string_view kJournalHead = "tarnwick swap 2";
constexpr std::string_view kLists = "lists", kEnd = "end\n";
constexpr std::array<std::string_view, 5> kStates{"staged", "moving", "moved", "back", "refused"};
constexpr std::string_view kNone = "-";
constexpr std::uintmax_t kLongestJournal = 4u << 20;
constexpr std::ptrdiff_t kFirstOld = 6;  ///< The line behind those that each journal has.

/// A name on a line of its own: what its user gave the program may hold a line feed.
std::string Escaped(std::string_view name) {
  std::string text;
  for (const char c : name) c == '\n' ? text += "%0A" : c == '%' ? text += "%25" : text += c;
  return text;
}

std::string Unescaped(std::string_view text) {
  std::string name;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view three = text.substr(at, 3);
    const bool escape = three == "%0A" || three == "%25";
    name += escape ? (three == "%25" ? '%' : '\n') : text[at];
    if (escape) at += 2;
  }
  return name;
}

std::string JournalText(const Journal& journal) {
  std::string text;
  const std::string program = Escaped(journal.program);
  for (const std::string_view line :
       {kJournalHead, kStates[static_cast<std::size_t>(journal.state)], std::string_view(journal.folder),
        std::string_view(program), std::string_view(journal.version), std::string_view(journal.signature)})
    text.append(line).append("\n");
  for (const OldFile& file : journal.old)
    text += (file.digest.empty() ? std::string(kNone) : file.digest) + " " + Escaped(file.name) + "\n";
  return text.append(kLists).append("\n").append(journal.lists).append(kEnd);
}

/// A program has the name that its user gave it, whatever that is.
bool IsComponent(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

/// True for a folder's name that an update here has.
bool IsUpdateFolder(std::string_view name) {
  if (!name.starts_with(kUpdatePrefix)) return false;
  name.remove_prefix(kUpdatePrefix.size());
  return name.size() == 16 && name.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace

std::optional<Journal> ReadJournal(const fs::path& folder, std::error_code& error) {
  const std::optional<std::string> text = files::ReadWhole(folder / kJournalName, kLongestJournal, error);
  const bool none = error == std::errc::no_such_file_or_directory || error == files::Problem::NotOrdinary ||
                    error == files::Problem::TooLarge;
  if (none) error.clear();
  if (!text || !text->ends_with(kEnd)) return std::nullopt;
  const std::vector<std::string_view> lines = text::Split(*text, '\n');
  if (std::ssize(lines) < kFirstOld || lines[0] != kJournalHead) return std::nullopt;
  const auto* const state = std::find(kStates.begin(), kStates.end(), lines[1]);
  if (state == kStates.end() || !IsUpdateFolder(lines[2])) return std::nullopt;
  Journal journal{static_cast<Journal::State>(state - kStates.begin()),
                  std::string(lines[2]),
                  Unescaped(lines[3]),
                  std::string(lines[4]),
                  std::string(lines[5]),
                  {},
                  {}};
  if (!IsComponent(journal.program)) return std::nullopt;
  const auto lists = std::find(lines.begin() + kFirstOld, lines.end(), kLists);
  if (lists == lines.end()) return std::nullopt;
  for (auto line = lines.begin() + kFirstOld; line != lists; ++line) {
    const std::size_t blank = line->find(' ');
    if (blank == std::string_view::npos) return std::nullopt;
    const std::string name = Unescaped(line->substr(blank + 1));
    const std::string_view digest = line->substr(0, blank);
    if (!IsComponent(name)) return std::nullopt;
    journal.old.push_back({name, digest == kNone ? "" : std::string(digest)});
  }
  const auto from = static_cast<std::size_t>(lists->data() - text->data()) + kLists.size() + 1;
  if (from + kEnd.size() > text->size()) return std::nullopt;
  journal.lists = text->substr(from, text->size() - from - kEnd.size());
  return journal;
}

std::optional<Journal> ReadJournal(const fs::path& folder) {
  std::error_code ignored;
  return ReadJournal(folder, ignored);
}

std::error_code WriteJournal(const fs::path& folder, const Journal& journal) {
  return files::Replace(folder / kJournalName, JournalText(journal));
}

std::error_code DropJournal(const fs::path& folder) {
  const std::error_code error = files::Remove(folder / kJournalName);
  if (!error) SweepUpdates(folder);
  return error;
}

std::error_code MakeUpdateFolder(const fs::path& folder, std::string& name) {
  name = std::string(kUpdatePrefix) + files::UniquePart();
  return files::MakeFolder(folder / name);
}

void SweepUpdates(const fs::path& folder) {
  std::error_code error;
  const std::optional<Journal> journal = ReadJournal(folder, error);
  if (error) return;  // It may name any of them.
  for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
    std::error_code ignored;
    const std::string name = each->path().filename().string();
    if (!IsUpdateFolder(name) || each->is_symlink(ignored) || (journal && journal->folder == name)) continue;
    fs::remove_all(each->path(), ignored);
  }
}

std::optional<RefusedRelease> ReadRefused(const fs::path& folder) {
  const std::optional<std::string> text = files::ReadWhole(folder / kRefusedName, kLongestJournal);
  if (!text) return std::nullopt;
  const std::vector<std::string_view> lines = text::Split(*text, '\n');
  if (lines.size() < 3) return std::nullopt;
  return RefusedRelease{std::string(lines[0]), std::string(lines[1]), lines[2] == "told"};
}

std::error_code WriteRefused(const fs::path& folder, const RefusedRelease& refused) {
  return files::Replace(folder / kRefusedName, refused.version + "\n" + refused.signature + "\n" +
                                                   (refused.told ? "told" : "untold") + "\n");
}

}  // namespace tarnwick
