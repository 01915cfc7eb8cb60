// A folder that lives as long as its object.
#pragma once

#include <stdlib.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnwick::test {

/// Where flushing costs no time, for tests that do little else; the usual folder where there is none.
inline std::filesystem::path InMemory() {
  struct statvfs info {};
  const char* const memory = "/dev/shm";
  const bool usable =
      ::statvfs(memory, &info) == 0 && (info.f_flag & ST_NOEXEC) == 0 && ::access(memory, W_OK) == 0;
  return usable ? std::filesystem::path(memory) : std::filesystem::temp_directory_path();
}

class TempFolder {
 public:
  explicit TempFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    std::string pattern = (parent / "tarnwick-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    mPath = pattern;
  }
  ~TempFolder() {
    std::error_code error;
    std::filesystem::remove_all(mPath, error);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return mPath; }
  std::filesystem::path operator/(std::string_view name) const { return mPath / name; }

 private:
  std::filesystem::path mPath;
};

inline void WriteFile(const std::filesystem::path& path, std::string_view content) {
  std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace tarnwick::test
