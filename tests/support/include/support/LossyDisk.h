// What a power cut leaves of a folder: what was flushed, and of the rest each part or not, in any order.
//
// A file's contents and mode are kept once the file was flushed; that it has a name, or another one, once the
// folder was. A renaming is kept whole or not at all, as on every file system with a journal. Deletions that
// do not go through the wrapped calls are kept at once.
#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/FileFaults.h"
#include "support/TempFolder.h"

namespace tarnwick::test {

class LossyDisk {
 public:
  /// The folder as it is, all of it flushed.
  explicit LossyDisk(const std::filesystem::path& home) : mHome(home) {
    for (const auto& each : std::filesystem::recursive_directory_iterator(home)) {
      if (each.is_directory()) {
        mFolders.push_back(each.path());
      } else {
        mNames[each.path()] =
            Add({ReadFile(each.path()), static_cast<unsigned>(each.status().permissions())});
      }
    }
  }

  /// Leaves in the folder what is left when the power goes behind the first `count` of `calls`.
  void Cut(const std::vector<FileCall>& calls, std::size_t count, std::mt19937& random) {
    LossyDisk disk = *this;
    std::map<std::string, std::size_t> now = mNames;  // as the program sees it
    for (std::size_t at = 0; at < count; ++at) {
      const FileCall& call = calls[at];
      const bool kept = random() % 2 == 0;
      if (call.call == "mkdir") {
        disk.mFolders.push_back(call.path);
      } else if (call.call == "create") {
        now[call.path] = disk.Add({"", call.mode});
        if (kept || Flushed(calls, at, count, Parent(call.path))) disk.mNames[call.path] = now[call.path];
      } else if (call.call == "write" || call.call == "fchmod") {
        if (!now.contains(call.path)) continue;
        File& file = disk.mFiles[now[call.path]];
        const bool whole = kept || Flushed(calls, at, count, call.path);
        if (call.call == "fchmod" && whole) file.mode = call.mode;
        if (call.call == "write")
          file.content += whole ? call.data : call.data.substr(0, random() % (call.data.size() + 1));
      } else if (call.call == "rename") {
        now[call.to] = now[call.path];
        now.erase(call.path);
        if (!kept && !Flushed(calls, at, count, Parent(call.to))) continue;
        disk.mNames[call.to] = now[call.to];
        disk.mNames.erase(call.path);
      } else if (call.call == "unlink") {
        now.erase(call.path);
        if (kept || Flushed(calls, at, count, Parent(call.path))) disk.mNames.erase(call.path);
      }
    }
    disk.WriteOut();
  }

 private:
  struct File {
    std::string content;
    unsigned mode;
  };

  std::size_t Add(File file) {
    mFiles.push_back(std::move(file));
    return mFiles.size() - 1;
  }
  static std::string Parent(const std::string& path) { return std::filesystem::path(path).parent_path(); }
  static bool Flushed(const std::vector<FileCall>& calls, std::size_t from, std::size_t to,
                      const std::string& path) {
    return std::any_of(calls.begin() + static_cast<std::ptrdiff_t>(from),
                       calls.begin() + static_cast<std::ptrdiff_t>(to),
                       [&](const FileCall& call) { return call.call == "fsync" && call.path == path; });
  }
  void WriteOut() const {
    std::filesystem::remove_all(mHome);
    std::filesystem::create_directories(mHome);
    for (const std::string& folder : mFolders) std::filesystem::create_directories(folder);
    for (const auto& [name, file] : mNames) {
      if (!std::filesystem::exists(Parent(name))) continue;
      WriteFile(name, mFiles[file].content);
      std::filesystem::permissions(name, std::filesystem::perms(mFiles[file].mode));
    }
  }

  std::filesystem::path mHome;
  std::vector<std::string> mFolders;
  std::vector<File> mFiles;
  std::map<std::string, std::size_t> mNames;
};

}  // namespace tarnwick::test
