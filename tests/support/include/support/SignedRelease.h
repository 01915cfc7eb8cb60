// A release as the update site offers it: files, their rows, and the signed list.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/program.h"
#include "webupdate/Release.h"
#include "webupdate/SelfUpdate.h"

namespace tarnwick::test {

struct SignedRelease {
  /// Adds a file; the first program and the first library are the main ones.
  void Add(const std::string& name, const std::string& version, const std::string& content) {
    ReleaseFile file{ReleaseFile::Kind::Other, name, version, static_cast<std::int32_t>(content.size()),
                     DigestOf(content)};
    if (IsProgramName(name) && !program) file.kind = ReleaseFile::Kind::Program, program = true;
    if (IsLibraryName(name) && !library) file.kind = ReleaseFile::Kind::Library, library = true;
    release.files.push_back(file);
    contents[name] = content;
    rows.push_back("$" + name + ", " + version + ", " + std::to_string(content.size()) + "\r\n");
  }
  std::string List() const { return ReleaseText(release, next, keys.secret); }
  std::string Rows() const {
    std::string text;
    for (const std::string& row : rows) text += row;
    return text;
  }
  std::string Text() const { return List() + Rows(); }

  KeyPair keys = *MakeKeyPair();
  std::optional<PublicKey> next;
  Release release{.version = "2.2.5", .system = program::System(), .files = {}};
  std::map<std::string, std::string> contents;
  std::vector<std::string> rows;
  bool program = false, library = false;
};

}  // namespace tarnwick::test
