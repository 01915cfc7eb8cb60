// The signature at the end of a program file on the update site. docs/update-site.md tells its form.
//
// The site is not trusted, nor is the way to it: a file of the program is what the holder of the signing
// key once made under that name and with that version, or it is refused.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick {

using PublicKey = std::array<std::uint8_t, 32>;
using SecretKey = std::array<std::uint8_t, 64>;

struct KeyPair {
  PublicKey open;
  SecretKey secret;
};

/// A new pair, of the system's randomness; none where there is none.
std::optional<KeyPair> MakeKeyPair();

/// Keys as text: two lower-case hexadecimal digits a byte. Reading takes blanks round them and either
/// case, and gives none for anything else.
std::string KeyText(std::span<const std::uint8_t> key);
/// A public key is a point of the curve too, which few others are that were pasted by mistake.
std::optional<PublicKey> ReadPublicKey(std::string_view text);
std::optional<SecretKey> ReadSecretKey(std::string_view text);

/// The line that makes `content` the file `name` of version `version`, to be put behind it. Empty where
/// name or version could be taken for another: with control characters, a version also with blanks.
std::string SignatureLine(std::string_view content, std::string_view name, std::string_view version,
                          const SecretKey& key);

/// The signature of a text, and whether one is of that text. The text must not begin as the texts do that
/// `SignatureLine` signs, or the one signature could pass for the other.
std::string SignText(std::string_view text, const SecretKey& key);
bool IsTextSigned(std::string_view text, std::string_view signature, const PublicKey& key);

/// The public half of a secret key; none where the two halves that it holds do not belong together.
std::optional<PublicKey> PublicHalf(const SecretKey& key);

/// Whether `file`, its signature line included, was signed as that name and version with the secret half of
/// `key`.
bool IsSigned(std::string_view file, std::string_view name, std::string_view version, const PublicKey& key);

}  // namespace tarnwick
