#include "platform/library.h"

#include <dlfcn.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <string>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

template <class Record>
bool ReadAt(std::ifstream& file, std::uintmax_t position, Record& record) {
  file.seekg(static_cast<std::streamoff>(position));
  return static_cast<bool>(file.read(reinterpret_cast<char*>(&record), sizeof record));
}

/// True when the file holds every part that its program headers tell the loader to map.
bool IsWhole(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return false;
  const std::uintmax_t size = fs::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  ElfW(Ehdr) header{};
  if (error || !ReadAt(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
  if (header.e_phentsize != sizeof(ElfW(Phdr)) || header.e_phoff > size) return false;
  for (std::uintmax_t i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) part{};
    if (!ReadAt(file, header.e_phoff + i * sizeof part, part)) return false;
    if (part.p_offset > size || part.p_filesz > size - part.p_offset) return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<SharedLibrary> SharedLibrary::Open(const fs::path& path) {
  std::error_code error;
  // A name without a folder would be searched for in the system's folders.
  const fs::path absolute = fs::absolute(path, error);
  if (error || !IsWhole(absolute)) return nullptr;
  void* const handle = ::dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return nullptr;
  return std::unique_ptr<SharedLibrary>(new SharedLibrary(handle));
}

SharedLibrary::~SharedLibrary() {
  ::dlclose(mHandle);
}

void* SharedLibrary::Find(std::string_view decorated) const {
  const std::size_t at = decorated.find('@');
  if (at == std::string_view::npos) return nullptr;
  const std::string name(decorated.substr(0, at));
  const std::string version(decorated.substr(at + 1));
  return ::dlvsym(mHandle, name.c_str(), version.c_str());
}

}  // namespace tarnwick
