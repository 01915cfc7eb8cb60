#include "webupdate/Release.h"

#include <sodium.h>

#include <algorithm>
#include <set>
#include <utility>

#include "CatalogueRow.h"
#include "link/LinkLibrary.h"
#include "platform/SharedLibrary.h"
#include "platform/http.h"
#include "platform/program.h"
#include "platform/text.h"
#include "webupdate/HarmlessName.h"
#include "webupdate/Journal.h"
#include "webupdate/SelfUpdate.h"

namespace tarnwick {
namespace {

constexpr std::string_view kHead = "tarnwick release 1";
constexpr std::string_view kVersion = "version ", kSystem = "system ", kNext = "next ",
                           kSignature = "signature ";
constexpr std::string_view kKinds[] = {"program", "library", "file"};  // as `ReleaseFile::Kind` counts
/// Lists are few: one a system, and those that hand a key on.
constexpr std::size_t kMostLists = 32;
constexpr std::size_t kMostLines = Release::kMostFiles + 4;

std::optional<PublicKey> gTrusted;

/// A list as it is read: what of it is signed, and the signature.
struct SignedList {
  std::string body;  ///< Lines, each ended by LF.
  std::string signature;
};

/// The lists of a text, in order, believed or not.
std::vector<SignedList> ListsIn(std::string_view text) {
  std::vector<SignedList> lists;
  SignedList list;
  std::size_t lines = 0;
  std::string_view line;
  for (bool more = true; more && lists.size() < kMostLists;) {
    more = text::NextLine(text, line);
    if (!more) line = text;
    line = text::Trim(line);
    if (IsPackageRow(line)) break;
    if (line == kHead) list = {}, lines = kMostLines;
    if (lines == 0) continue;
    if (line.starts_with(kSignature)) {
      list.signature = line.substr(kSignature.size());
      lists.push_back(std::exchange(list, {}));
      lines = 0;
    } else {
      list.body.append(line).append("\n");
      --lines;
    }
  }
  return lists;
}

/// What an update keeps in its own folder beside the files.
bool IsTakenName(std::string_view name) {
  return text::EqualNoCase(name, "old") || text::EqualNoCase(name.substr(0, 6), "begun.");
}

/// "KIND VERSION SIZE DIGEST NAME"
std::optional<ReleaseFile> ReadFile(std::string_view line) {
  std::array<std::string_view, 4> words;
  for (std::string_view& word : words) {
    const std::size_t end = line.find(' ');
    if (end == std::string_view::npos) return std::nullopt;
    word = line.substr(0, end);
    line.remove_prefix(end + 1);
  }
  const auto* const kind = std::find(std::begin(kKinds), std::end(kKinds), words[0]);
  if (kind == std::end(kKinds)) return std::nullopt;
  ReleaseFile file{static_cast<ReleaseFile::Kind>(kind - std::begin(kKinds)), std::string(line),
                   std::string(words[1]), text::ToInt32(text::NumericPrefix(words[2])),
                   std::string(words[3])};
  const bool good =
      IsHarmlessName(file.name) && !IsTakenName(file.name) &&
      !text::EqualNoCase(line.substr(0, kUpdatePrefix.size()), kUpdatePrefix) && !file.version.empty() &&
      file.size > 0 && static_cast<std::size_t>(file.size) <= http::kLargestAnswer &&
      std::to_string(file.size) == words[2] && file.digest.size() == crypto_hash_sha256_BYTES * 2;
  return good ? std::optional(file) : std::nullopt;
}

/// What the signed body says, and the key that it hands on. None where it is no release that can be
/// installed.
std::optional<Release> ReadBody(std::string_view body, std::optional<PublicKey>& next) {
  Release release;
  std::set<std::string> names;
  std::array<int, std::size(kKinds)> count{};
  for (std::string_view line : text::Split(body.substr(0, body.size() - 1), '\n')) {
    if (line == kHead) continue;
    if (line.starts_with(kVersion)) {
      release.version = line.substr(kVersion.size());
    } else if (line.starts_with(kSystem)) {
      release.system = line.substr(kSystem.size());
    } else if (line.starts_with(kNext)) {
      if (!(next = ReadPublicKey(line.substr(kNext.size())))) return std::nullopt;
    } else {
      const auto file = ReadFile(line);
      if (!file || !names.insert(text::Upper(InstalledName(*file, "program "))).second) return std::nullopt;
      ++count[static_cast<std::size_t>(file->kind)];
      release.files.push_back(*file);
    }
  }
  return ReadVersion(release.version) && count[0] == 1 && count[1] == 1 ? std::optional(release)
                                                                        : std::nullopt;
}

std::string WithLineEnds(const SignedList& list) {
  std::string text;
  for (const std::string_view line :
       text::Split(std::string_view(list.body).substr(0, list.body.size() - 1), '\n'))
    text.append(line).append(text::kLineEnd);
  return text.append(kSignature).append(list.signature).append(text::kLineEnd);
}

}  // namespace

std::optional<VersionNumbers> ReadVersion(std::string_view version) {
  const std::vector<std::string_view> parts = text::Split(version, '.');
  if (parts.size() < 3) return std::nullopt;
  VersionNumbers numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = text::ToInt32(text::NumericPrefix(parts[i]));
  return numbers;
}

std::string DigestOf(std::string_view content) {
  std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
  crypto_hash_sha256(digest.data(), reinterpret_cast<const unsigned char*>(content.data()), content.size());
  return KeyText(digest);
}

std::string ReleaseText(const Release& release, const std::optional<PublicKey>& next, const SecretKey& key) {
  std::string body(kHead);
  body.append("\n");
  body.append(kVersion).append(release.version).append("\n");
  body.append(kSystem).append(release.system).append("\n");
  for (const ReleaseFile& file : release.files) {
    body.append(kKinds[static_cast<std::size_t>(file.kind)]).append(" ").append(file.version).append(" ");
    body += std::to_string(file.size) + " " + file.digest + " " + file.name + "\n";
  }
  if (next) body.append(kNext).append(KeyText(*next)).append("\n");
  return WithLineEnds({body, SignText(body, key)});
}

std::optional<Release> ReadRelease(std::string_view text, const PublicKey& key, std::string_view system) {
  std::vector<PublicKey> keys{key};
  std::optional<Release> best;
  std::string lists;
  for (const SignedList& list : ListsIn(text)) {
    const auto fits = [&](const PublicKey& each) { return IsTextSigned(list.body, list.signature, each); };
    if (std::none_of(keys.begin(), keys.end(), fits)) continue;
    lists += WithLineEnds(list);
    std::optional<PublicKey> next;
    std::optional<Release> release = ReadBody(list.body, next);
    if (next) keys.push_back(*next);
    if (!release || release->system != system) continue;
    if (best && *ReadVersion(release->version) <= *ReadVersion(best->version)) continue;
    best = std::move(release);
    best->signature = list.signature;
    best->lists = lists;
  }
  return best;
}

void TrustKey(const PublicKey& key) {
  gTrusted = key;
}

const std::optional<PublicKey>& TrustedKey() {
  return gTrusted;
}

std::string InstalledName(const ReleaseFile& file, const std::string& program) {
  if (file.kind == ReleaseFile::Kind::Program) return program;
  if (file.kind == ReleaseFile::Kind::Library) return LinkLibraryFile().filename().string();
  if (!HasVersion(file.name)) return file.name;
  std::string stem = file.name.substr(0, file.name.size() - kProgramEnding.size());
  return stem.append(IsProgramName(file.name) ? program::kFileEnding : kSharedLibraryEnding);
}

}  // namespace tarnwick
