// When files were modified, and the local time of a moment.
#include "platform/clock.h"
#include "platform/files.h"
#include "win32.h"

namespace tarnwick {
namespace {

// The system counts tenths of microseconds from the year 1601.
constexpr std::int64_t kSecond = 10'000'000;
constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;

std::int64_t CountOf(const FILETIME& time) {
  return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

std::optional<FILETIME> ModifiedAt(const std::filesystem::path& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (::GetFileAttributesExW(win32::Wide(path).c_str(), GetFileExInfoStandard, &data) == 0)
    return std::nullopt;
  return data.ftLastWriteTime;
}

bool SetModified(const std::filesystem::path& path, const FILETIME& time) {
  const win32::Handle file =
      win32::OpenFile(path, FILE_WRITE_ATTRIBUTES, win32::kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  return file && ::SetFileTime(file.Get(), nullptr, nullptr, &time) != 0;
}

}  // namespace

std::optional<std::tm> clock::LocalTime(std::time_t moment) {
  std::tm local{};
  if (::localtime_s(&local, &moment) != 0) return std::nullopt;
  return local;
}

std::optional<std::tm> files::LastModified(const std::filesystem::path& path) {
  const std::optional<FILETIME> time = ModifiedAt(path);
  if (!time) return std::nullopt;
  return clock::LocalTime(CountOf(*time) / kSecond - kSecondsTo1970);
}

bool files::SetLastModified(const std::filesystem::path& path, const std::tm& local) {
  const std::optional<std::time_t> moment = clock::MomentOf(local);
  if (!moment) return false;
  const auto count = static_cast<std::uint64_t>((*moment + kSecondsTo1970) * kSecond);
  return SetModified(path, {static_cast<DWORD>(count), static_cast<DWORD>(count >> 32)});
}

bool files::CopyLastModified(const std::filesystem::path& from, const std::filesystem::path& to) {
  const std::optional<FILETIME> time = ModifiedAt(from);
  return time && SetModified(to, *time);
}

}  // namespace tarnwick
