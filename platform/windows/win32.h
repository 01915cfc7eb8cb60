// What the files of this folder share.
#pragma once

// Wide calls, and none of the headers' names that are not asked for.
#define UNICODE
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace tarnwick::win32 {

/// An error of the system's own numbers, which compares with the portable ones; its words are the system's, in
/// UTF-8.
std::error_code Error(DWORD number);
/// The error that the last failed call of the system left.
inline std::error_code LastError() {
  return Error(::GetLastError());
}

/// The path as the system's calls for files take it, of any length. A name that means a device here gives one
/// that begins with "\\.\".
std::wstring Wide(const std::filesystem::path& path);

/// Text is UTF-8 wherever it is none of the code page's: names of files, arguments, words of the system.
std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);

/// The file from which the module was loaded; null for the program itself.
std::filesystem::path FileOfModule(HMODULE module);

// The system promises that 32 bits tell a handle, so that public headers need none of its types; -1 is none.
inline int NumberOf(HANDLE handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}
inline HANDLE HandleOf(int number) {
  return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(number));
}

/// A handle that closes itself.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : mHandle(handle) {}
  Handle(Handle&& other) noexcept : mHandle(other.Take()) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(mHandle, other.mHandle);
    return *this;
  }
  ~Handle() {
    if (*this) ::CloseHandle(mHandle);
  }
  explicit operator bool() const { return mHandle != INVALID_HANDLE_VALUE && mHandle != nullptr; }
  HANDLE Get() const { return mHandle; }
  HANDLE Take() { return std::exchange(mHandle, INVALID_HANDLE_VALUE); }

 private:
  HANDLE mHandle = INVALID_HANDLE_VALUE;
};

/// Opens a file, for all to share but what `share` leaves out; never a device. Its error is the system's.
Handle OpenFile(const std::filesystem::path& path, DWORD access, DWORD share, DWORD how, DWORD flags = 0);

/// Lets go of each lock that this process holds, for its last moments.
void LetLocksGo();

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

}  // namespace tarnwick::win32
