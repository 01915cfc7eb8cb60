// Files read and written whole. A file is replaced by writing beside it, flushing and renaming, so
// that at each moment either the old or the new contents stand under its name.
#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick::files {

/// True when something of that name is there and can be reached. Never fails.
bool FileExists(const std::filesystem::path& path);

/// True when files can be made in that folder. Never fails.
bool IsWritable(const std::filesystem::path& folder);

/// What the system has no number for.
enum class Problem { NotOrdinary = 1, TooLarge, NoMemory, Changed };
std::error_code make_error_code(Problem problem);

/// The whole file, or nothing, and the cause in `error`, when it cannot be opened or read, is no ordinary
/// file, memory for it cannot be had, or it is larger than `limit` bytes.
std::optional<std::string> ReadWhole(const std::filesystem::path& path, std::uintmax_t limit,
                                     std::error_code& error);
std::optional<std::string> ReadWhole(const std::filesystem::path& path, std::uintmax_t limit = UINTMAX_MAX);

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
/// An open file, closed with its object.
using Stream = std::unique_ptr<std::FILE, CloseFile>;

/// Opens an ordinary file to be read, and tells its size in bytes. None, and the cause in `error`, where that
/// cannot be done.
Stream OpenToRead(const std::filesystem::path& path, std::uintmax_t& size, std::error_code& error);

/// Makes the file `path` to be written; none where anything of that name is there, a link too.
Stream CreateToWrite(const std::filesystem::path& path);

/// Adds `text` to the end of a file, which is made when there is none. A link under the name is not followed,
/// and only an ordinary file is written to. Not flushed.
std::error_code Append(const std::filesystem::path& path, std::string_view text);

/// New contents of a file, written beside it; `Commit` puts them into its place. What is not committed
/// goes with its object. What a killed program left beside the file goes with the next `Write`. A link under
/// the name is replaced itself: what it leads to is never written.
class Staged {
 public:
  explicit Staged(const std::filesystem::path& path);
  ~Staged();
  Staged(const Staged&) = delete;
  Staged& operator=(const Staged&) = delete;

  /// Writes and flushes, with the mode that the file has. Only an ordinary file or a link is replaced: a
  /// folder or a device under the name is an error.
  std::error_code Write(std::string_view content);
  /// Where the contents lie until then: a name that no other file has.
  const std::filesystem::path& Beside() const { return mBeside; }
  /// Renames, so that the old or the new contents stand under the name at each moment.
  std::error_code Commit();

 private:
  std::filesystem::path mTarget;
  std::filesystem::path mBeside;
  int mHeld = -1;  ///< Keeps others from taking the file for one that was left behind.
};

/// Puts `content` under `path` atomically and durably, as `Staged` does. On an error the old file stays as
/// it was and nothing is left beside it.
std::error_code Replace(const std::filesystem::path& path, std::string_view content);

/// Makes the file `path`, with its mode, durably. An error where anything of that name is there, a link too;
/// nothing is left then that was not there before.
std::error_code Create(const std::filesystem::path& path, std::string_view content,
                       std::filesystem::perms mode);

/// Makes the folder `path`, durably. An error where anything of that name is there.
std::error_code MakeFolder(const std::filesystem::path& path);

/// Gives a file another name on its file system, durably; what bore that name goes, also where it is a
/// program that runs.
std::error_code Rename(const std::filesystem::path& from, const std::filesystem::path& to);

/// Deletes a file. None there is an error too.
std::error_code Remove(const std::filesystem::path& path);

/// 16 hexadecimal digits of the system's randomness: a part of names that nobody else has.
std::string UniquePart();

/// When the file was last modified, in local time; none when that cannot be told.
std::optional<std::tm> LastModified(const std::filesystem::path& path);

/// Sets that time and no other. False when it fails; no file is made.
bool SetLastModified(const std::filesystem::path& path, const std::tm& local);
/// Gives `to` the time that `from` has, to the last digit. False when it fails.
bool CopyLastModified(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace tarnwick::files

template <>
struct std::is_error_code_enum<tarnwick::files::Problem> : std::true_type {};
