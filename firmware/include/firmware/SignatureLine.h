// The line behind the last line of a signed package, where the format looks at nothing. What it means is
// judged elsewhere; here is only where it stands.
#pragma once

#include <string_view>

namespace tarnwick {

inline constexpr std::string_view kSignatureBefore = "\n<!-- tarnwick package ";
inline constexpr std::string_view kSignatureBehind = " -->\n";
/// Characters of the signature itself.
inline constexpr std::size_t kSignatureLength = 88;

/// A package in its two parts.
struct SignedParts {
  std::string_view content;
  std::string_view signature;  ///< The characters of the signature; empty for a package without one.
};

/// Takes the signature line off `package`. One that is not written as it has to be is content.
constexpr SignedParts TakeSignature(std::string_view package) {
  constexpr std::size_t kLine = kSignatureBefore.size() + kSignatureLength + kSignatureBehind.size();
  if (package.size() < kLine || !package.ends_with(kSignatureBehind)) return {package, {}};
  const std::string_view line = package.substr(package.size() - kLine);
  if (!line.starts_with(kSignatureBefore)) return {package, {}};
  return {package.substr(0, package.size() - kLine), line.substr(kSignatureBefore.size(), kSignatureLength)};
}

}  // namespace tarnwick
