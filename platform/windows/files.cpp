#include "platform/files.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <utility>

#include "beside.h"
#include "win32.h"

#include <bcrypt.h>  // needs what stands above

namespace tarnwick::files {
namespace {

namespace fs = std::filesystem;
using win32::Handle;
using win32::LastError;
using win32::OpenFile;

/// How much one call reads or writes.
constexpr std::size_t kPiece = 1u << 20;

DWORD PieceOf(std::size_t size) {
  return static_cast<DWORD>(std::min(size, kPiece));
}

bool ReadAll(HANDLE file, std::string& content) {
  std::size_t done = 0;
  while (done < content.size()) {
    DWORD got = 0;
    if (::ReadFile(file, content.data() + done, PieceOf(content.size() - done), &got, nullptr) == 0)
      return false;
    if (got == 0) break;
    done += got;
  }
  content.resize(done);
  return true;
}

std::error_code WriteAll(HANDLE file, std::string_view content) {
  while (!content.empty()) {
    DWORD put = 0;
    if (::WriteFile(file, content.data(), PieceOf(content.size()), &put, nullptr) == 0) return LastError();
    content.remove_prefix(put);
  }
  return {};
}

/// The attributes of what bears the name, a link itself and not what it leads to; none where nothing does.
DWORD AttributesOf(const fs::path& path) {
  return ::GetFileAttributesW(win32::Wide(path).c_str());
}

bool IsOrdinary(DWORD attributes) {
  return (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) == 0;
}

/// An ordinary file, opened to be read; its size.
Handle OpenToReadAs(const fs::path& path, std::uintmax_t& size, std::error_code& error) {
  error.clear();
  // Folders open by this flag alone, and are told apart then.
  Handle file = OpenFile(path, GENERIC_READ, win32::kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  BY_HANDLE_FILE_INFORMATION info{};
  if (!file || ::GetFileInformationByHandle(file.Get(), &info) == 0) {
    error = LastError();
  } else if (::GetFileType(file.Get()) != FILE_TYPE_DISK ||
             (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    error = Problem::NotOrdinary;
  }
  size = std::uintmax_t{info.nFileSizeHigh} << 32 | info.nFileSizeLow;
  return error ? Handle() : std::move(file);
}

std::error_code WriteNew(const Handle& file, std::string_view content) {
  if (!file) return LastError();
  if (const std::error_code error = WriteAll(file.Get(), content)) return error;
  return ::FlushFileBuffers(file.Get()) == 0 ? LastError() : std::error_code();
}

/// Deletes what killed programs left beside `target`. What a living one writes cannot be opened to be written.
void SweepBeside(const fs::path& target) {
  const std::wstring folder = win32::Wide(target.has_parent_path() ? target.parent_path() : fs::path("."));
  const std::wstring name = target.filename().native();
  WIN32_FIND_DATAW found{};
  const HANDLE search = ::FindFirstFileW((folder + L"\\" + name + L".*.new").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    if (!IsBeside(win32::ToUtf8(found.cFileName), win32::ToUtf8(name))) continue;
    const fs::path left = folder + L"\\" + found.cFileName;
    if (OpenFile(left, GENERIC_WRITE, win32::kShareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT))
      ::DeleteFileW(left.c_str());
  } while (::FindNextFileW(search, &found) != 0);
  ::FindClose(search);
}

/// Looks and searches of other programs hold a file for a moment: tries again for about half a second.
template <class Action>
std::error_code Insist(Action&& action) {
  for (int tries = 0;; ++tries) {
    if (action()) return {};
    const std::error_code error = LastError();
    if (error.value() != ERROR_SHARING_VIOLATION || tries == 25) return error;
    ::Sleep(20);
  }
}

bool Move(const std::wstring& from, const std::wstring& to) {
  return ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

/// A file that runs, or that somebody reads, cannot be replaced but moved aside, and goes with its last user or
/// with a later sweep. The one case in which there is a moment without a file of that name.
bool MoveAside(const std::wstring& from, const fs::path& to) {
  const std::wstring place = win32::Wide(to);
  const std::wstring aside = win32::Wide(BesideName(to));
  if (!Move(place, aside)) return false;
  if (Move(from, place)) {
    ::DeleteFileW(aside.c_str());
    return true;
  }
  const DWORD error = ::GetLastError();
  Move(aside, place);
  ::SetLastError(error);
  return false;
}

}  // namespace

bool FileExists(const fs::path& path) {
  return AttributesOf(path) != INVALID_FILE_ATTRIBUTES;
}

/// Who may is told by trying: rights here are lists that no one bit sums up.
bool IsWritable(const fs::path& folder) {
  constexpr DWORD kGoes = FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE;
  return static_cast<bool>(
      OpenFile(BesideName(folder / "Tarnwick"), GENERIC_WRITE | DELETE, 0, CREATE_NEW, kGoes));
}

std::optional<std::string> ReadWhole(const fs::path& path, std::uintmax_t limit, std::error_code& error) {
  const auto fail = [&error](const std::error_code& cause) {
    error = cause;
    return std::nullopt;
  };
  std::uintmax_t size = 0;
  const Handle file = OpenToReadAs(path, size, error);
  if (error) return std::nullopt;
  if (size > limit) return fail(Problem::TooLarge);
  try {
    std::string content(static_cast<std::size_t>(size), '\0');
    if (!ReadAll(file.Get(), content)) return fail(LastError());
    if (content.size() == size) return content;
    return fail(Problem::Changed);
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return fail(Problem::NoMemory);
}

Stream OpenToRead(const fs::path& path, std::uintmax_t& size, std::error_code& error) {
  Handle file = OpenToReadAs(path, size, error);
  if (error) return nullptr;
  return Stream(::_fdopen(
      ::_open_osfhandle(reinterpret_cast<std::intptr_t>(file.Take()), _O_RDONLY | _O_BINARY), "rb"));
}

Stream CreateToWrite(const fs::path& path) {
  Handle file = OpenFile(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW);
  if (!file) return nullptr;
  return Stream(
      ::_fdopen(::_open_osfhandle(reinterpret_cast<std::intptr_t>(file.Take()), _O_BINARY), "wb"));
}

std::error_code Append(const fs::path& path, std::string_view text) {
  const Handle file = OpenFile(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, win32::kShareAll,
                               OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT);
  BY_HANDLE_FILE_INFORMATION info{};
  if (!file || ::GetFileInformationByHandle(file.Get(), &info) == 0) return LastError();
  if (!IsOrdinary(info.dwFileAttributes)) return Problem::NotOrdinary;
  return WriteAll(file.Get(), text);
}

Staged::Staged(const fs::path& path) : mTarget(path), mBeside(BesideName(path)) {}

Staged::~Staged() {
  if (mHeld == -1) return;
  ::DeleteFileW(win32::Wide(mBeside).c_str());
  ::CloseHandle(win32::HandleOf(mHeld));
}

/// Held open for nobody else to write, by which a sweep knows it; it can be renamed so.
std::error_code Staged::Write(std::string_view content) {
  const DWORD old = AttributesOf(mTarget);
  const bool there = old != INVALID_FILE_ATTRIBUTES;
  if (there && (old & FILE_ATTRIBUTE_DIRECTORY) != 0)
    return std::make_error_code(std::errc::operation_not_permitted);
  SweepBeside(mTarget);
  Handle file = OpenFile(mBeside, GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW,
                         there && IsOrdinary(old) ? old & FILE_ATTRIBUTE_HIDDEN : 0);
  const std::error_code error = WriteNew(file, content);
  mHeld = win32::NumberOf(file.Take());
  return error;
}

std::error_code Staged::Commit() {
  const std::error_code error = Rename(mBeside, mTarget);
  if (!error) ::CloseHandle(win32::HandleOf(std::exchange(mHeld, -1)));
  return error;
}

/// Who may do what with a new file follows from its folder: of the mode nothing is left here.
std::error_code Create(const fs::path& path, std::string_view content, fs::perms) {
  Handle file = OpenFile(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW, FILE_FLAG_WRITE_THROUGH);
  if (!file) return LastError();
  const std::error_code error = WriteNew(file, content);
  file = Handle();
  if (error) ::DeleteFileW(win32::Wide(path).c_str());
  return error;
}

std::error_code MakeFolder(const fs::path& path) {
  return ::CreateDirectoryW(win32::Wide(path).c_str(), nullptr) == 0 ? LastError() : std::error_code();
}

std::error_code Rename(const fs::path& from, const fs::path& to) {
  const std::wstring source = win32::Wide(from);
  return Insist([&] {
    if (Move(source, win32::Wide(to))) return true;
    const DWORD error = ::GetLastError();
    if (error == ERROR_ACCESS_DENIED && IsOrdinary(AttributesOf(to)) && MoveAside(source, to)) return true;
    if (error == ERROR_ACCESS_DENIED && ::GetLastError() != ERROR_SHARING_VIOLATION) ::SetLastError(error);
    return false;
  });
}

std::error_code Remove(const fs::path& path) {
  const std::wstring wide = win32::Wide(path);
  return Insist([&] { return ::DeleteFileW(wide.c_str()) != 0; });
}

std::uint64_t RandomNumber() {
  std::uint64_t number = 0;
  if (::BCryptGenRandom(nullptr, reinterpret_cast<PUCHAR>(&number), sizeof number,
                        BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0)
    number = ::GetCurrentProcessId() * 0x9E3779B97F4A7C15u + ::GetTickCount64();
  return number;
}

}  // namespace tarnwick::files
