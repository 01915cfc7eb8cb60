// A folder in which nothing can be made, deleted or renamed, also for tests run by root.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace tarnwick::test {

/// Locks `folder` for its lifetime. Root, whom no mode stops, is an ordinary user meanwhile; so
/// `folder` and the ones above it have to be open to others for reading.
class ReadOnlyFolder {
 public:
  explicit ReadOnlyFolder(const std::filesystem::path& folder) : mFolder(folder) {
    constexpr uid_t kNobody = 65534;
    Mode(0555);
    if (mUser == 0 && ::seteuid(kNobody) != 0) throw std::runtime_error("cannot become an ordinary user");
  }
  ~ReadOnlyFolder() {
    if (::seteuid(mUser) == 0) Mode(0755);
  }
  ReadOnlyFolder(const ReadOnlyFolder&) = delete;
  ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

 private:
  void Mode(unsigned bits) {
    std::error_code ignored;
    std::filesystem::permissions(mFolder, static_cast<std::filesystem::perms>(bits), ignored);
  }

  std::filesystem::path mFolder;
  uid_t mUser = ::geteuid();
};

}  // namespace tarnwick::test
