// A release of the program as one signed list. docs/update-site.md tells its form.
//
// The site is not trusted, nor is the way to it. What the list names is one release, all of it or nothing:
// whoever alters a byte of it, leaves a file out or puts an older one in has no list that is believed.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "webupdate/SignedFile.h"

namespace tarnwick {

/// The first three numbers of "2.2.4"; none where there are fewer parts.
using VersionNumbers = std::array<std::int32_t, 3>;
std::optional<VersionNumbers> ReadVersion(std::string_view version);

struct ReleaseFile {
  enum class Kind { Program, Library, Other };

  Kind kind = Kind::Other;
  std::string name;       ///< In the catalogue and on the site; harmless.
  std::string version;    ///< Or a date, as in the catalogue's row.
  std::int32_t size = 0;  ///< Bytes, signature line included.
  std::string digest;     ///< As `DigestOf` gives it.
};

struct Release {
  /// More files than that are no release of ours.
  static constexpr std::size_t kMostFiles = 60;

  std::string version;
  std::string system;  ///< That it is for, as `program::System` tells it.
  std::vector<ReleaseFile>
      files;                   ///< One program and one library among them; names differ in more than case.
  std::string signature = {};  ///< As text; tells one list from all others.
  std::string lists = {};      ///< All that has to be read to believe this one, itself included.
};

/// SHA-256, as 64 lower-case hexadecimal digits.
std::string DigestOf(std::string_view content);

/// The list as lines, each ended by CR LF, signed with `key`. `next` is the key of releases to come.
std::string ReleaseText(const Release& release, const std::optional<PublicKey>& next, const SecretKey& key);

/// The newest release for `system` that `text` has a list of, signed with the secret half of `key` or of one
/// that a list before it names as the next; none where there is none. What stands between lists is passed
/// over, and everything from the first package row of a catalogue on.
std::optional<Release> ReadRelease(std::string_view text, const PublicKey& key, std::string_view system);

/// The key whose holder may sign releases. Until it is set none is accepted.
void TrustKey(const PublicKey& key);
const std::optional<PublicKey>& TrustedKey();

/// The name that a file of a release has where it is installed on this system. The program keeps `program`,
/// the name that its user gave it.
std::string InstalledName(const ReleaseFile& file, const std::string& program);

}  // namespace tarnwick
