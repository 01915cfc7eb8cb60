#include "webupdate/PackageSignature.h"

#include <algorithm>
#include <optional>

#include "firmware/QALclass.h"
#include "firmware/SignatureLine.h"
#include "platform/files.h"
#include "platform/http.h"
#include "platform/program.h"
#include "platform/text.h"
#include "platform/ui.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using State = PackageSignature::State;

constexpr std::string_view kBuiltInName = "Halcyrion";
constexpr std::string_view kKeyEnding = ".pub";
constexpr std::string_view kAltered =
    "The signature of this package does not fit. It may have been altered. Use it all the same?";
constexpr std::uintmax_t kLongestKeyFile = 1000;
constexpr std::size_t kLongestName = 60;
/// Stands in front of what is signed, so that no signature of a package is one of anything else.
constexpr std::string_view kPurpose = "tarnwick package 1\n";

std::optional<PublicKey>& BuiltIn() {
  static std::optional<PublicKey> key;
  return key;
}

std::string SignedText(std::string_view content) {
  std::string text;
  text.reserve(kPurpose.size() + content.size());
  return text.append(kPurpose).append(content);
}

/// Something that looks as if it were a signature, or had been one.
bool HoldsRemains(std::string_view content) {
  return content.find(kSignatureBefore.substr(1)) != content.npos;
}

}  // namespace

void TrustPackageKey(const PublicKey& key) {
  BuiltIn() = key;
}

std::vector<PackageSigner> PackageSigners() {
  std::vector<PackageSigner> signers;
  std::error_code error;
  for (fs::directory_iterator entry(program::This().folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->path().extension() != kKeyEnding) continue;
    const std::string name = entry->path().stem().string();
    const auto key = ReadPublicKey(files::ReadWhole(entry->path(), kLongestKeyFile).value_or(""));
    if (key && name.size() <= kLongestName && std::none_of(name.begin(), name.end(), text::IsControl))
      signers.push_back({name, *key});
  }
  std::sort(signers.begin(), signers.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  if (BuiltIn()) signers.insert(signers.begin(), {std::string(kBuiltInName), *BuiltIn()});
  return signers;
}

PackageSignature JudgeSignature(std::string_view package, const std::vector<PackageSigner>& signers) {
  const SignedParts parts = TakeSignature(package);
  if (parts.signature.empty()) return {HoldsRemains(package) ? State::DoesNotFit : State::None};
  if (!parts.content.ends_with(text::kLineEnd)) return {State::DoesNotFit};
  const std::string text = SignedText(parts.content);
  const auto signer = std::find_if(signers.begin(), signers.end(), [&](const PackageSigner& each) {
    return IsTextSigned(text, parts.signature, each.key);
  });
  return signer == signers.end() ? PackageSignature{State::DoesNotFit}
                                 : PackageSignature{State::Fits, signer->name};
}

PackageSignature JudgeSignatureOf(const fs::path& path) {
  const auto package = files::ReadWhole(path, http::kLargestAnswer);
  return package ? JudgeSignature(*package, PackageSigners()) : PackageSignature();
}

PackageSignature LoadSigned(QALclass& package, const fs::path& path) {
  const auto text = files::ReadWhole(path, http::kLargestAnswer);
  if (text && !text->empty()) {
    package.LoadQALfile(path, *text);
    return JudgeSignature(*text, PackageSigners());
  }
  package.LoadQALfile(path);
  // What could not be read a moment ago and now can is not what was judged. An empty file has nothing to sign.
  const auto size = package.Identity().Size;
  const bool another = !package.ErrorsFound() && size > 0 && size <= http::kLargestAnswer;
  return {another ? State::DoesNotFit : State::None};
}

bool AcceptSignature(const PackageSignature& signature) {
  if (signature.state != State::DoesNotFit) return true;
  return ui::MessageBox(kAltered, ui::Buttons::NoYes, ui::Icon::Critical) == ui::Answer::Yes;
}

std::string SignPackage(std::string_view package, const SecretKey& key) {
  const std::string_view content = TakeSignature(package).content;
  if (!content.ends_with(text::kLineEnd) || HoldsRemains(content)) return {};
  const std::string signature = SignText(SignedText(content), key);
  if (signature.empty()) return {};
  return std::string(content).append(kSignatureBefore).append(signature).append(kSignatureBehind);
}

std::string SignatureText(const PackageSignature& signature) {
  if (signature.state == State::Fits) return "Signed by " + signature.signer;
  return signature.state == State::None ? "Not signed" : "The signature does not fit";
}

}  // namespace tarnwick
