#include "win32.h"

#include <array>

namespace tarnwick::win32 {
namespace {

/// The numbers that somebody above asks for, and the portable ones that mean the same.
constexpr std::array<std::pair<DWORD, std::errc>, 22> kMeanings = {{
    {ERROR_FILE_NOT_FOUND, std::errc::no_such_file_or_directory},
    {ERROR_PATH_NOT_FOUND, std::errc::no_such_file_or_directory},
    {ERROR_INVALID_NAME, std::errc::no_such_file_or_directory},
    {ERROR_BAD_NETPATH, std::errc::no_such_file_or_directory},
    {ERROR_TOO_MANY_OPEN_FILES, std::errc::too_many_files_open},
    {ERROR_ACCESS_DENIED, std::errc::permission_denied},
    {ERROR_WRITE_PROTECT, std::errc::read_only_file_system},
    {ERROR_SHARING_VIOLATION, std::errc::device_or_resource_busy},
    {ERROR_LOCK_VIOLATION, std::errc::resource_unavailable_try_again},
    {ERROR_NOT_ENOUGH_MEMORY, std::errc::not_enough_memory},
    {ERROR_OUTOFMEMORY, std::errc::not_enough_memory},
    {ERROR_HANDLE_DISK_FULL, std::errc::no_space_on_device},
    {ERROR_DISK_FULL, std::errc::no_space_on_device},
    {ERROR_FILE_EXISTS, std::errc::file_exists},
    {ERROR_ALREADY_EXISTS, std::errc::file_exists},
    {ERROR_DIR_NOT_EMPTY, std::errc::directory_not_empty},
    {ERROR_NOT_SAME_DEVICE, std::errc::cross_device_link},
    {ERROR_FILENAME_EXCED_RANGE, std::errc::filename_too_long},
    {ERROR_BAD_EXE_FORMAT, std::errc::executable_format_error},
    {ERROR_EXE_MACHINE_TYPE_MISMATCH, std::errc::executable_format_error},
    {ERROR_INVALID_PARAMETER, std::errc::invalid_argument},
    {ERROR_SEM_TIMEOUT, std::errc::timed_out},
}};

class Category final : public std::error_category {
 public:
  const char* name() const noexcept override { return "windows"; }
  std::string message(int number) const override {
    std::array<wchar_t, 512> text{};
    constexpr DWORD kPlain =
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const DWORD length = ::FormatMessageW(kPlain, nullptr, static_cast<DWORD>(number), 0, text.data(),
                                          static_cast<DWORD>(text.size()), nullptr);
    std::string words = ToUtf8(std::wstring_view(text.data(), length));
    while (words.ends_with(' ') || words.ends_with('.')) words.pop_back();
    return words.empty() ? "Error " + std::to_string(number) + " of the system" : words;
  }
  std::error_condition default_error_condition(int number) const noexcept override {
    for (const auto& [own, meaning] : kMeanings)
      if (own == static_cast<DWORD>(number)) return meaning;
    return {number, *this};
  }
};

constexpr std::wstring_view kDevice = L"\\\\.\\";
constexpr std::wstring_view kAnyLength = L"\\\\?\\";

}  // namespace

std::error_code Error(DWORD number) {
  static const Category category;
  return {static_cast<int>(number), category};
}

std::wstring Wide(const std::filesystem::path& path) {
  const std::wstring& given = path.native();
  if (given.starts_with(kAnyLength)) return given;
  if (given.find(L'\0') != std::wstring::npos) return {};
  std::wstring whole(::GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
  whole.resize(::GetFullPathNameW(given.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
  if (whole.empty() || whole.starts_with(kDevice) || whole.starts_with(kAnyLength)) return whole;
  if (whole.starts_with(L"\\\\")) return L"\\\\?\\UNC" + whole.substr(1);
  return std::wstring(kAnyLength) + whole;
}

std::string ToUtf8(std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  std::string bytes(3 * text.size(), '\0');
  const int length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, nullptr);
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::wstring FromUtf8(std::string_view text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');
  const int length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
  wide.resize(static_cast<std::size_t>(length));
  return wide;
}

std::filesystem::path FileOfModule(HMODULE module) {
  std::wstring name(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = ::GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
    if (length < name.size()) return name.substr(0, length);
    name.resize(2 * name.size());
  }
}

Handle OpenFile(const std::filesystem::path& path, DWORD access, DWORD share, DWORD how, DWORD flags) {
  const std::wstring wide = Wide(path);
  if (!wide.starts_with(kDevice))
    return Handle(
        ::CreateFileW(wide.c_str(), access, share, nullptr, how, FILE_ATTRIBUTE_NORMAL | flags, nullptr));
  ::SetLastError(ERROR_INVALID_NAME);
  return {};
}

}  // namespace tarnwick::win32
