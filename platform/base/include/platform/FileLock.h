// A lock that processes share as readers, or that one of them has for itself.
#pragma once

#include <filesystem>
#include <system_error>

namespace tarnwick {

/// It lies on a file of its own, which stays, and goes with its object or its process, however that ends. No
/// call waits: where others are in the way, the error is `resource_unavailable_try_again`.
class FileLock {
 public:
  FileLock() = default;
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// Opens the lock's file, made where it is missing. Nothing is locked yet. An error where that cannot be.
  std::error_code Open(const std::filesystem::path& file);
  bool IsOpen(const std::filesystem::path& file) const { return mFd >= 0 && mFile == file; }

  /// Holds it as one reader of many; whoever had it alone has it as a reader then, without a gap.
  std::error_code Share();
  /// Holds it alone. On an error what was held before is held still.
  std::error_code Claim();
  void Release();

 private:
  std::error_code Set(short kind);

  std::filesystem::path mFile;
  int mFd = -1;
  std::error_code mReadOnly;  ///< Why the file could not be opened to be claimed; none where it could.
};

}  // namespace tarnwick
