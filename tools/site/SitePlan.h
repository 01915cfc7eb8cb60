// An update site as it is to be: its files and its catalogue, made from a folder of sources.
// docs/update-site.md tells both formats.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "webupdate/SignedFile.h"

namespace tarnwick::site {

/// The catalogue's name on the site.
inline constexpr const char* kCatalogueName = "list.txt";

/// A file that the site offers, and its lines in the catalogue.
struct SiteFile {
  std::string name;
  std::string content;
  char tag = '$';
  std::string second;              ///< The date, or the version.
  std::vector<std::string> lines;  ///< Of the description; none for a file of the program.
};

/// Faults are told as "FILE: what". A plan that has one is not to be carried out.
struct SitePlan {
  std::vector<SiteFile> files;  ///< In the order of the catalogue.
  std::string catalogue;
  std::vector<std::string> faults;
};

/// How a release is signed.
struct Signing {
  std::optional<SecretKey> key;   ///< Without one no program file is published.
  std::optional<PublicKey> open;  ///< What `key` has to be the secret half of, where that is asked for.
  std::optional<PublicKey> next;  ///< The key of releases to come.
  std::string system;             ///< What the program files are for.
};

/// Reads all of `source` and plans its site. The same files with the same times give the same plan.
SitePlan MakePlan(const std::filesystem::path& source, const Signing& signing);

/// Writes the files into `folder`, the catalogue last, so that it never names what is not there. False
/// after a message on standard error; the catalogue is then as it was.
bool Publish(const SitePlan& plan, const std::filesystem::path& folder);

}  // namespace tarnwick::site
