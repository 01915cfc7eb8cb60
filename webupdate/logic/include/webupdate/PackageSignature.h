// Signatures of packages: a line behind the last one, where the format looks at nothing, over the content
// alone. So a package stays readable everywhere, and keeps its signature when it is renamed.
//
// Unsigned packages are used as ever; one whose signature does not fit was altered, or comes from somebody
// whose key is not here.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "webupdate/SignedFile.h"

namespace tarnwick {

class QALclass;

/// A signer whose packages are believed.
struct PackageSigner {
  std::string name;  ///< As it is shown.
  PublicKey key;
};

/// Takes the key that this program was built with as the first that packages may be signed with.
void TrustPackageKey(const PublicKey& key);

/// The signers that are believed: the built-in one first, then those whose keys lie in the program's folder
/// as files NAME.pub, by name. What is no key there is passed over.
std::vector<PackageSigner> PackageSigners();

struct PackageSignature {
  enum class State { None, Fits, DoesNotFit } state = State::None;
  std::string signer = {};  ///< Whose it is, where it fits.
};

/// Judges the signature of a whole package. One that was cut, or is no whole line, does not fit.
PackageSignature JudgeSignature(std::string_view package, const std::vector<PackageSigner>& signers);

/// Takes the file at `path`. One that cannot be read, or is larger than any answer of the site, has none.
PackageSignature JudgeSignatureOf(const std::filesystem::path& path);

/// Loads the file at `path` into `package`, which identifies what it loads, and judges the signature of the
/// very bytes that it took: whoever puts another file there meanwhile gets neither. A file that could not be
/// read whole, and then can be loaded, is another one by now: its signature does not fit.
PackageSignature LoadSigned(QALclass& package, const std::filesystem::path& path);

/// Whether a package may be used as far as its signature goes: asks the user where that does not fit.
bool AcceptSignature(const PackageSignature& signature);

/// `package` with a signature of its content in place of any that it had. Empty where the content does not
/// end in a line end, so that it could not be told from the signature.
std::string SignPackage(std::string_view package, const SecretKey& key);

/// The line that page 3 shows: "Signed by NAME", "Not signed", or "The signature does not fit".
std::string SignatureText(const PackageSignature& signature);

}  // namespace tarnwick
