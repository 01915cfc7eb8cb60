// A folder that lives as long as its object.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace tarnwick::test {

class TempFolder {
 public:
  explicit TempFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    mPath = parent / ("tarnwick-test-" + files::UniquePart());
    std::filesystem::create_directory(mPath);
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
