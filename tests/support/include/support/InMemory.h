// A folder in memory.
#pragma once

#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>

namespace tarnwick::test {

/// Where flushing costs no time, for tests that do little else; the usual folder where there is none.
inline std::filesystem::path InMemory() {
  struct statvfs info {};
  const char* const memory = "/dev/shm";
  const bool usable =
      ::statvfs(memory, &info) == 0 && (info.f_flag & ST_NOEXEC) == 0 && ::access(memory, W_OK) == 0;
  return usable ? std::filesystem::path(memory) : std::filesystem::temp_directory_path();
}

}  // namespace tarnwick::test
