#include "platform/program.h"

#include <cstdlib>
#include <optional>

namespace tarnwick::program {
namespace {

std::optional<Identity> gIdentity;

Identity ReadIdentity() {
  Identity identity{{}, "Tarnwick", TARNWICK_VERSION_MAJOR, TARNWICK_VERSION_MINOR, TARNWICK_VERSION_PATCH,
                    {}};
  std::error_code error;
  const std::filesystem::path executable = RunningFile();
  if (executable.empty()) {
    identity.folder = std::filesystem::current_path(error);
  } else {
    identity.folder = executable.parent_path();
    identity.name = executable.stem().string();
    identity.file = executable.filename().string();
  }
  return identity;
}

}  // namespace

const Identity& This() {
  if (!gIdentity) gIdentity = ReadIdentity();
  return *gIdentity;
}

void Set(Identity identity) {
  gIdentity = std::move(identity);
}

std::filesystem::path Executable() {
  const Identity& self = This();
  return self.folder / (self.file.empty() ? self.name : self.file);
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
