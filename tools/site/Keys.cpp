#include "Keys.h"

#include <cstdio>
#include <fstream>

#include "platform/files.h"

namespace tarnwick::site {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLongestKeyFile = 1000;

bool Put(const fs::path& file, const std::string& key, fs::perms mode) {
  std::error_code error;
  // The mode comes before the contents do.
  if (!std::ofstream(file)) error = std::make_error_code(std::errc::permission_denied);
  if (!error) fs::permissions(file, mode, error);
  if (!error) error = files::Replace(file, key + "\n");
  if (error) std::fprintf(stderr, "%s: %s\n", file.c_str(), error.message().c_str());
  return !error;
}

}  // namespace

bool MakeKeyFiles(const fs::path& folder) {
  const fs::path secret = folder / "update.key";
  if (files::FileExists(secret)) {
    std::fprintf(stderr, "%s: there is a key already\n", secret.c_str());
    return false;
  }
  const std::optional<KeyPair> pair = MakeKeyPair();
  if (!pair) {
    std::fputs("The system gives no randomness.\n", stderr);
    return false;
  }
  std::error_code error;
  fs::create_directories(folder, error);
  constexpr fs::perms kOwner = fs::perms::owner_read | fs::perms::owner_write;
  return Put(secret, KeyText(pair->secret), kOwner) &&
         Put(folder / "update.pub", KeyText(pair->open),
             kOwner | fs::perms::group_read | fs::perms::others_read);
}

std::optional<SecretKey> ReadKeyFile(const fs::path& file) {
  const auto key = ReadSecretKey(files::ReadWhole(file, kLongestKeyFile).value_or(""));
  if (!key) std::fprintf(stderr, "%s: no secret key\n", file.c_str());
  return key;
}

void SignProgramFiles(SitePlan& plan, const SecretKey& key) {
  for (SiteFile& file : plan.files)
    if (file.tag == '$') file.content += SignatureLine(file.content, file.name, file.second, key);
}

}  // namespace tarnwick::site
