#include "platform/program.h"

#include <cstdlib>
#include <optional>
#include <utility>

namespace tarnwick::program {
namespace {

std::optional<Identity> gIdentity;

/// Where the libraries of an installed program lie, which itself lies in `place`.
std::filesystem::path LibrariesOf(const std::filesystem::path& place) {
  return place.parent_path() / "lib" / "tarnwick";
}

bool IsInstalledIn(const std::filesystem::path& place) {
  std::error_code error;
  return place.filename() == "bin" && std::filesystem::is_directory(LibrariesOf(place), error);
}

Identity ReadIdentity() {
  Identity identity{{}, "Tarnwick", TARNWICK_VERSION_MAJOR, TARNWICK_VERSION_MINOR, TARNWICK_VERSION_PATCH,
                    {}};
  std::error_code error;
  const std::filesystem::path executable = RunningFile();
  if (executable.empty()) {
    identity.folder = std::filesystem::current_path(error);
  } else {
    identity.folder = executable.parent_path();
    if (IsInstalledIn(identity.folder)) {
      identity.place = std::exchange(identity.folder, FolderOf(LibrariesOf(identity.folder)));
      std::filesystem::create_directories(identity.folder, error);
    }
    identity.name = executable.stem().string();
    identity.file = executable.filename().string();
  }
  return identity;
}

}  // namespace

std::filesystem::path FolderOf(const std::filesystem::path& libraries) {
  const std::filesystem::path data = UserData();
  const bool installed = libraries.filename() == "tarnwick" && libraries.parent_path().filename() == "lib";
  return installed && !data.empty() ? data / "Tarnwick" : libraries;
}

const Identity& This() {
  if (!gIdentity) gIdentity = ReadIdentity();
  return *gIdentity;
}

void Set(Identity identity) {
  gIdentity = std::move(identity);
}

std::filesystem::path Executable() {
  const Identity& self = This();
  return (IsInstalled() ? self.place : self.folder) / (self.file.empty() ? self.name : self.file);
}

bool IsInstalled() {
  return !This().place.empty();
}

std::filesystem::path LibraryFolder() {
  return IsInstalled() ? LibrariesOf(This().place) : This().folder;
}

std::string VersionText() {
  const Identity& self = This();
  return std::to_string(self.major) + "." + std::to_string(self.minor) + "." + std::to_string(self.revision);
}

std::string Caption() {
  return This().name + "  v" + VersionText();
}

void End() {
  if (const Ending* const ending = Seam<Ending>::Used()) {
    ending->run();
  } else {
    std::_Exit(EXIT_SUCCESS);
  }
}

}  // namespace tarnwick::program
