#include "platform/SharedLibrary.h"

#include <algorithm>
#include <fstream>

#include "platform/files.h"
#include "win32.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// The length that a library's headers tell: the end of the section that lies last. 0 when they are none.
std::uintmax_t ToldSize(std::ifstream& file) {
  IMAGE_DOS_HEADER begin{};
  IMAGE_NT_HEADERS64 header{};
  const auto read = [&file](auto& part) {
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&part), sizeof part));
  };
  if (!read(begin) || begin.e_magic != IMAGE_DOS_SIGNATURE) return 0;
  file.seekg(begin.e_lfanew);
  if (!read(header) || header.Signature != IMAGE_NT_SIGNATURE) return 0;
  file.seekg(begin.e_lfanew + static_cast<LONG>(offsetof(IMAGE_NT_HEADERS64, OptionalHeader)) +
             header.FileHeader.SizeOfOptionalHeader);
  std::uintmax_t end = 0;
  for (WORD i = 0; i < header.FileHeader.NumberOfSections; ++i) {
    IMAGE_SECTION_HEADER section{};
    if (!read(section)) return UINTMAX_MAX;
    end = std::max(end, std::uintmax_t{section.PointerToRawData} + section.SizeOfRawData);
  }
  return end;
}

/// Why the file is not as long as its headers tell; empty when it is.
std::string WhyNotWhole(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) return "there is no such file";
  if (error) return error.message();
  if (!fs::is_regular_file(status)) return "it is no ordinary file";
  std::ifstream file(path, std::ios::binary);
  if (!file) return "it cannot be read";
  const std::uintmax_t told = ToldSize(file);
  if (told == 0) return "it is no shared library";
  return told <= fs::file_size(path, error) && !error ? std::string() : "it is shorter than it says";
}

/// The handle of a library that is loaded without a word to the user.
HMODULE Load(const fs::path& path, DWORD from, std::string& cause) {
  DWORD mode = 0;
  ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &mode);
  const HMODULE handle = ::LoadLibraryExW(path.c_str(), nullptr, from);
  cause = handle == nullptr ? win32::LastError().message() : std::string();
  ::SetThreadErrorMode(mode, nullptr);
  return handle;
}

}  // namespace

constinit const std::string_view kSharedLibraryEnding = ".dll";

std::unique_ptr<SharedLibrary> SharedLibrary::Open(const fs::path& path, std::string& cause) {
  std::error_code error;
  // A name without a folder would be searched for in the system's folders.
  const fs::path absolute = fs::absolute(path, error);
  cause = error ? error.message() : WhyNotWhole(absolute);
  if (!cause.empty()) return nullptr;
  // What it needs itself comes from the system alone, and never from the folder that the program was started in.
  const HMODULE handle =
      Load(absolute, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32, cause);
  return handle == nullptr ? nullptr : std::unique_ptr<SharedLibrary>(new SharedLibrary(handle));
}

std::unique_ptr<SharedLibrary> SharedLibrary::OpenSystem(const std::string& name, std::string& cause) {
  cause = "it is no name of a library";
  if (name.find_first_of("/\\:") != std::string::npos) return nullptr;
  const HMODULE handle = Load(win32::FromUtf8(name), LOAD_LIBRARY_SEARCH_SYSTEM32, cause);
  if (handle == nullptr) return nullptr;
  HMODULE pinned = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(handle), &pinned);
  return std::unique_ptr<SharedLibrary>(new SharedLibrary(handle));
}

SharedLibrary::~SharedLibrary() {
  ::FreeLibrary(static_cast<HMODULE>(mHandle));
}

/// Names are decorated here as they stand.
void* SharedLibrary::Find(std::string_view decorated) const {
  const std::string name(decorated);
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(mHandle), name.c_str()));
}

fs::path FolderOfCode(const void* code) {
  HMODULE module = nullptr;
  constexpr DWORD kByAddress =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (::GetModuleHandleExW(kByAddress, static_cast<LPCWSTR>(code), &module) == 0) return {};
  return win32::FileOfModule(module).parent_path();
}

}  // namespace tarnwick
