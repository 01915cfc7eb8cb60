// The key pair that updates of the program are signed with, as files: "update.key", which stays with who
// releases, and "update.pub", which a release build is given.
#pragma once

#include <filesystem>
#include <optional>

#include "SitePlan.h"
#include "webupdate/SignedFile.h"

namespace tarnwick::site {

/// Makes a pair in `folder`, the secret half for its owner's eyes only. False after a message, also where
/// there is one already: it is never replaced.
bool MakeKeyFiles(const std::filesystem::path& folder);

/// The secret key in a file; none after a message.
std::optional<SecretKey> ReadKeyFile(const std::filesystem::path& file);

/// Puts a signature line behind each file of the program.
void SignProgramFiles(SitePlan& plan, const SecretKey& key);

}  // namespace tarnwick::site
