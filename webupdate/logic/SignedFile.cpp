#include "webupdate/SignedFile.h"

#include <sodium.h>

#include <algorithm>

namespace tarnwick {
namespace {

using Signature = std::array<std::uint8_t, crypto_sign_BYTES>;

constexpr std::string_view kBefore = "\n<!-- tarnwick signature ";
constexpr std::string_view kBehind = " -->\n";
constexpr std::size_t kBase64Length =
    sodium_base64_ENCODED_LEN(crypto_sign_BYTES, sodium_base64_VARIANT_ORIGINAL) - 1;
constexpr std::size_t kLineLength = kBefore.size() + kBase64Length + kBehind.size();

static_assert(std::tuple_size_v<PublicKey> == crypto_sign_PUBLICKEYBYTES);
static_assert(std::tuple_size_v<SecretKey> == crypto_sign_SECRETKEYBYTES);

bool IsPlain(std::string_view text, unsigned char lowest) {
  return !text.empty() && std::ranges::all_of(text, [lowest](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= lowest && byte != 0x7F;
  });
}

/// What is signed: version and name on a line of their own, so that neither can be taken for a part of the
/// other or of the content. None where they could.
std::optional<std::string> HeadOf(std::string_view name, std::string_view version) {
  if (!IsPlain(name, ' ') || !IsPlain(version, '!')) return std::nullopt;
  std::string head = "tarnwick file 1 ";
  return head.append(version).append(" ").append(name).append("\n");
}

const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

crypto_sign_state Digest(std::string_view head, std::string_view content) {
  crypto_sign_state state;
  crypto_sign_init(&state);
  crypto_sign_update(&state, BytesOf(head), head.size());
  crypto_sign_update(&state, BytesOf(content), content.size());
  return state;
}

std::string Base64(const Signature& signature) {
  std::string text(kBase64Length + 1, '\0');
  sodium_bin2base64(text.data(), text.size(), signature.data(), signature.size(),
                    sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();
  return text;
}

std::string Sign(std::string_view head, std::string_view content, const SecretKey& key) {
  if (sodium_init() < 0) return {};
  crypto_sign_state state = Digest(head, content);
  Signature signature{};
  crypto_sign_final_create(&state, signature.data(), nullptr, key.data());
  return Base64(signature);
}

bool Fits(std::string_view text, std::string_view head, std::string_view content, const PublicKey& key) {
  if (text.size() != kBase64Length || sodium_init() < 0) return false;
  Signature signature{};
  std::size_t length = 0;
  if (sodium_base642bin(signature.data(), signature.size(), text.data(), text.size(), nullptr, &length,
                        nullptr, sodium_base64_VARIANT_ORIGINAL) != 0)
    return false;
  // The decoder is lenient; a signature is written in one way only.
  if (Base64(signature) != text) return false;
  crypto_sign_state state = Digest(head, content);
  return crypto_sign_final_verify(&state, signature.data(), key.data()) == 0;
}

template <class Key>
std::optional<Key> ReadKey(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return std::nullopt;
  text = text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
  Key key{};
  std::size_t length = 0;
  const char* end = nullptr;
  if (sodium_hex2bin(key.data(), key.size(), text.data(), text.size(), nullptr, &length, &end) != 0 ||
      length != key.size() || end != text.data() + text.size())
    return std::nullopt;
  return key;
}

}  // namespace

std::optional<KeyPair> MakeKeyPair() {
  if (sodium_init() < 0) return std::nullopt;
  KeyPair pair{};
  crypto_sign_keypair(pair.open.data(), pair.secret.data());
  return pair;
}

std::string KeyText(std::span<const std::uint8_t> key) {
  std::string text(key.size() * 2 + 1, '\0');
  sodium_bin2hex(text.data(), text.size(), key.data(), key.size());
  text.pop_back();
  return text;
}

std::optional<PublicKey> ReadPublicKey(std::string_view text) {
  const auto key = ReadKey<PublicKey>(text);
  return key && crypto_core_ed25519_is_valid_point(key->data()) == 1 ? key : std::nullopt;
}
std::optional<SecretKey> ReadSecretKey(std::string_view text) {
  const auto key = ReadKey<SecretKey>(text);
  return key && PublicHalf(*key) ? key : std::nullopt;
}

std::optional<PublicKey> PublicHalf(const SecretKey& key) {
  KeyPair made{};
  if (sodium_init() < 0) return std::nullopt;
  crypto_sign_seed_keypair(made.open.data(), made.secret.data(), key.data());
  return made.secret == key ? std::optional(made.open) : std::nullopt;
}

std::string SignatureLine(std::string_view content, std::string_view name, std::string_view version,
                          const SecretKey& key) {
  const std::optional<std::string> head = HeadOf(name, version);
  const std::string signature = head ? Sign(*head, content, key) : std::string();
  return signature.empty() ? signature : std::string(kBefore) + signature + std::string(kBehind);
}

bool IsSigned(std::string_view file, std::string_view name, std::string_view version, const PublicKey& key) {
  const std::optional<std::string> head = HeadOf(name, version);
  if (!head || file.size() < kLineLength) return false;
  const std::string_view content = file.substr(0, file.size() - kLineLength);
  const std::string_view line = file.substr(content.size());
  if (!line.starts_with(kBefore) || !line.ends_with(kBehind)) return false;
  return Fits(line.substr(kBefore.size(), kBase64Length), *head, content, key);
}

std::string SignText(std::string_view text, const SecretKey& key) {
  return Sign({}, text, key);
}

bool IsTextSigned(std::string_view text, std::string_view signature, const PublicKey& key) {
  return Fits(signature, {}, text, key);
}

}  // namespace tarnwick
