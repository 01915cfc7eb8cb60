// The key pair that updates of the program are signed with, as files: "update.key", which stays with who
// releases, and "update.pub", which a release build is given.
#pragma once

#include <filesystem>
#include <optional>

#include "SitePlan.h"
#include "webupdate/SignedFile.h"

namespace tarnwick::site {

/// Makes a pair in `folder`, the secret half for its owner's eyes only. False after a message, also where
/// there is a secret key already: it is never replaced. The public half of one that is there is made anew
/// where it is missing.
bool MakeKeyFiles(const std::filesystem::path& folder);

/// The secret key in a file; none after a message.
std::optional<SecretKey> ReadKeyFile(const std::filesystem::path& file);

/// The public key that `text` is, or that the file `text` holds; none after a message.
std::optional<PublicKey> ReadPublicKeyOrFile(const std::string& text);

/// Puts a signature line behind each file of the program, for those of its readers that know no lists, and
/// gives the signed list of them all. What stands in the way becomes a fault.
std::string SignRelease(SitePlan& plan, const Signing& signing);

}  // namespace tarnwick::site
