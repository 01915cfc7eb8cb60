#include "platform/SharedLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// Why the file is not as long as its header tells, which ends with the table of its sections; empty when
/// it is.
std::string WhyNotWhole(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) return "there is no such file";
  if (error) return error.message();
  if (!fs::is_regular_file(status)) return "it is no ordinary file";
  ElfW(Ehdr) header{};
  std::ifstream file(path, std::ios::binary);
  if (!file) return "it cannot be read";
  const bool read = static_cast<bool>(file.read(reinterpret_cast<char*>(&header), sizeof header));
  if (!read || !std::equal(header.e_ident, header.e_ident + SELFMAG, ELFMAG) || header.e_shoff == 0)
    return "it is no shared library";
  const std::uintmax_t size = fs::file_size(path, error);
  const std::uintmax_t table = std::uintmax_t{header.e_shnum} * header.e_shentsize;
  const bool whole = !error && header.e_shoff <= size && table <= size - header.e_shoff;
  return whole ? std::string() : "it is shorter than it says";
}

/// What the loader says of its last failure.
std::string LoaderText() {
  const char* const text = ::dlerror();
  return text == nullptr ? "it cannot be loaded" : text;
}

}  // namespace

constinit const std::string_view kSharedLibraryEnding = ".so";

std::unique_ptr<SharedLibrary> SharedLibrary::Open(const fs::path& path, std::string& cause) {
  std::error_code error;
  // A name without a folder would be searched for in the system's folders.
  const fs::path absolute = fs::absolute(path, error);
  cause = error ? error.message() : WhyNotWhole(absolute);
  if (!cause.empty()) return nullptr;
  void* const handle = ::dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle != nullptr) return std::unique_ptr<SharedLibrary>(new SharedLibrary(handle));
  cause = LoaderText();
  return nullptr;
}

std::unique_ptr<SharedLibrary> SharedLibrary::OpenSystem(const std::string& name, std::string& cause) {
  cause = "it is no name of a library";
  if (name.find('/') != std::string::npos) return nullptr;
  void* const handle = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  cause = handle == nullptr ? LoaderText() : std::string();
  return handle == nullptr ? nullptr : std::unique_ptr<SharedLibrary>(new SharedLibrary(handle));
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

fs::path FolderOfCode(const void* code) {
  Dl_info info{};
  if (::dladdr(code, &info) == 0 || info.dli_fname == nullptr) return {};
  return fs::absolute(info.dli_fname).parent_path();
}

}  // namespace tarnwick
