#include "Keys.h"

#include <cstdio>

#include "platform/files.h"
#include "platform/text.h"
#include "webupdate/Release.h"
#include "webupdate/SelfUpdate.h"

namespace tarnwick::site {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLongestKeyFile = 1000;
constexpr fs::perms kOwner = fs::perms::owner_read | fs::perms::owner_write;
constexpr fs::perms kAll = kOwner | fs::perms::group_read | fs::perms::others_read;

bool Put(const fs::path& file, const std::string& key, fs::perms mode) {
  const std::error_code error = files::Create(file, key + "\n", mode);
  if (error) std::fprintf(stderr, "%s: %s\n", file.string().c_str(), error.message().c_str());
  return !error;
}

/// The file of that kind which is the program, or the link library: the only one, or the one of its name.
const SiteFile* MainFile(const SitePlan& plan, bool (*isKind)(std::string_view), std::string_view ending) {
  const SiteFile* found = nullptr;
  int count = 0;
  for (const SiteFile& file : plan.files) {
    if (file.tag != '$' || !isKind(file.name)) continue;
    const bool named = text::EqualNoCase(file.name, "Tarnwick" + std::string(ending));
    if (named || count++ == 0) found = &file;
    if (named) return found;
  }
  return count == 1 ? found : nullptr;
}

}  // namespace

bool MakeKeyFiles(const fs::path& folder) {
  const fs::path secret = folder / "update.key", open = folder / "update.pub";
  std::error_code error;
  fs::create_directories(folder, error);
  if (files::FileExists(secret)) {
    const auto key = ReadKeyFile(secret);
    if (key && !files::FileExists(open)) return Put(open, KeyText(*PublicHalf(*key)), kAll);
    std::fprintf(stderr, "%s: there is a key already\n", secret.string().c_str());
    return false;
  }
  const std::optional<KeyPair> pair = MakeKeyPair();
  if (!pair) {
    std::fputs("The system gives no randomness.\n", stderr);
    return false;
  }
  // What a failed attempt left has no secret half that anybody knows.
  if (files::FileExists(open)) files::Remove(open);
  return Put(secret, KeyText(pair->secret), kOwner) && Put(open, KeyText(pair->open), kAll);
}

std::optional<SecretKey> ReadKeyFile(const fs::path& file) {
  const auto key = ReadSecretKey(files::ReadWhole(file, kLongestKeyFile).value_or(""));
  if (!key) std::fprintf(stderr, "%s: no secret key\n", file.string().c_str());
  return key;
}

std::optional<PublicKey> ReadPublicKeyOrFile(const std::string& text) {
  auto key = ReadPublicKey(text);
  if (!key) key = ReadPublicKey(files::ReadWhole(text, kLongestKeyFile).value_or(""));
  // Not the text itself: it may be a secret key, pasted by mistake.
  if (!key) std::fputs("That is no public key, nor a file that holds one.\n", stderr);
  return key;
}

std::string SignRelease(SitePlan& plan, const Signing& signing) {
  const SiteFile* const program = MainFile(plan, IsProgramName, kProgramEnding);
  const SiteFile* const library = MainFile(plan, IsLibraryName, kLibraryEnding);
  const auto fault = [&](const char* what) {
    plan.faults.emplace_back(what);
    return std::string();
  };
  if (!signing.key) return fault("Program: files of the program are published with a key alone");
  if (signing.open && PublicHalf(*signing.key) != signing.open)
    return fault("the secret key is not that of the public key");
  if (program == nullptr || library == nullptr)
    return fault("Program: a release has one program, Tarnwick.EXE, and one link library, Tarnwick.DLL");
  Release release{.version = program->second, .system = signing.system, .files = {}};
  for (SiteFile& file : plan.files) {
    if (file.tag != '$') continue;
    file.content += SignatureLine(file.content, file.name, file.second, *signing.key);
    ReleaseFile listed{.name = file.name,
                       .version = file.second,
                       .size = static_cast<std::int32_t>(file.content.size()),
                       .digest = DigestOf(file.content)};
    if (&file == program) listed.kind = ReleaseFile::Kind::Program;
    if (&file == library) listed.kind = ReleaseFile::Kind::Library;
    release.files.push_back(listed);
  }
  std::string list = ReleaseText(release, signing.next, *signing.key);
  const auto read = ReadRelease(list, *PublicHalf(*signing.key), signing.system);
  if (!read || read->files.size() != release.files.size())
    return fault("Program: the program would not take this release");
  return list;
}

}  // namespace tarnwick::site
