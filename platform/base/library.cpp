#include "platform/library.h"

#include <dlfcn.h>
#include <link.h>

#include <fstream>
#include <string>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// True when the file is as long as its header tells, which ends with the table of its sections.
bool IsWhole(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return false;
  ElfW(Ehdr) header{};
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(&header), sizeof header) || header.e_shoff == 0) return false;
  const std::uintmax_t size = fs::file_size(path, error);
  const std::uintmax_t table = std::uintmax_t{header.e_shnum} * header.e_shentsize;
  return !error && header.e_shoff <= size && table <= size - header.e_shoff;
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

std::unique_ptr<SharedLibrary> SharedLibrary::OpenSystem(const std::string& name) {
  if (name.find('/') != std::string::npos) return nullptr;
  void* const handle = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (handle == nullptr) return nullptr;
  return std::unique_ptr<SharedLibrary>(new SharedLibrary(handle));
}

SharedLibrary::~SharedLibrary() {
  ::dlclose(mHandle);
}

void* SharedLibrary::Find(std::string_view decorated) const {
  const std::size_t at = decorated.find('@');
  const std::string name(decorated.substr(0, at));
  if (at == std::string_view::npos) return ::dlsym(mHandle, name.c_str());
  const std::string version(decorated.substr(at + 1));
  return ::dlvsym(mHandle, name.c_str(), version.c_str());
}

}  // namespace tarnwick
