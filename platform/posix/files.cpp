#include "platform/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <utility>

#include "beside.h"
#include "platform/clock.h"
#include "posix.h"

namespace tarnwick::files {
namespace {

namespace fs = std::filesystem;
using posix::LastError;

/// A file descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int fd) : mFd(fd) {}
  ~Descriptor() {
    if (mFd >= 0) ::close(mFd);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return mFd; }
  int Take() { return std::exchange(mFd, -1); }

 private:
  int mFd;
};

bool ReadAll(int fd, std::string& content) {
  std::size_t done = 0;
  while (done < content.size()) {
    const ssize_t got = ::read(fd, content.data() + done, content.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  content.resize(done);
  return true;
}

std::error_code WriteAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t put = ::write(fd, content.data(), content.size());
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return LastError();
    content.remove_prefix(static_cast<std::size_t>(put));
  }
  return {};
}

/// Flushes the folder, so that the renaming itself survives a power cut. Best effort: some file
/// systems refuse it, and the file is in place either way.
void FlushFolder(const fs::path& folder) {
  const Descriptor fd(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.Get() >= 0) ::fsync(fd.Get());
}

/// Makes the file `path` of `content`, which stays open in `fd`.
std::error_code WriteNew(const Descriptor& fd, std::string_view content, mode_t mode) {
  // The mode comes before the flush, so that it is kept as surely as the contents are.
  if (fd.Get() < 0 || ::fchmod(fd.Get(), mode) != 0) return LastError();
  if (const std::error_code error = WriteAll(fd.Get(), content)) return error;
  return ::fsync(fd.Get()) != 0 ? LastError() : std::error_code();
}

Descriptor OpenNew(const fs::path& path) {
  return Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
}

/// Deletes what killed programs left beside `target`. What a living one writes is locked by it.
void SweepBeside(const fs::path& target) {
  std::error_code error;
  const std::string name = target.filename().string();
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
    if (!IsBeside(each->path().filename().native(), name)) continue;
    const Descriptor fd(::open(each->path().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (fd.Get() >= 0 && ::flock(fd.Get(), LOCK_EX | LOCK_NB) == 0) ::unlink(each->path().c_str());
  }
}

}  // namespace

bool FileExists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

bool IsWritable(const fs::path& folder) {
  return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

std::optional<std::string> ReadWhole(const fs::path& path, std::uintmax_t limit, std::error_code& error) {
  error.clear();
  const auto fail = [&error](const std::error_code& cause) {
    error = cause;
    return std::nullopt;
  };
  const Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat info {};
  if (fd.Get() < 0 || ::fstat(fd.Get(), &info) != 0) return fail(LastError());
  if (!S_ISREG(info.st_mode)) return fail(Problem::NotOrdinary);
  if (static_cast<std::uintmax_t>(info.st_size) > limit) return fail(Problem::TooLarge);
  try {
    std::string content(static_cast<std::size_t>(info.st_size), '\0');
    if (!ReadAll(fd.Get(), content)) return fail(LastError());
    if (content.size() == static_cast<std::size_t>(info.st_size)) return content;
    return fail(Problem::Changed);
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return fail(Problem::NoMemory);
}

Stream OpenToRead(const fs::path& path, std::uintmax_t& size, std::error_code& error) {
  error.clear();
  Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat info {};
  if (fd.Get() < 0 || ::fstat(fd.Get(), &info) != 0) {
    error = LastError();
  } else if (!S_ISREG(info.st_mode)) {
    error = Problem::NotOrdinary;
  }
  if (error) return nullptr;
  size = static_cast<std::uintmax_t>(info.st_size);
  Stream stream(::fdopen(fd.Get(), "rb"));
  if (!stream) error = LastError();
  if (stream) fd.Take();
  return stream;
}

Stream CreateToWrite(const fs::path& path) {
  return Stream(std::fopen(path.c_str(), "wbxe"));
}

std::error_code Append(const fs::path& path, std::string_view text) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const Descriptor fd(::open(path.c_str(), flags, 0644));
  struct stat info {};
  if (fd.Get() < 0 || ::fstat(fd.Get(), &info) != 0) return LastError();
  if (!S_ISREG(info.st_mode)) return Problem::NotOrdinary;
  return WriteAll(fd.Get(), text);
}

Staged::Staged(const fs::path& path) : mTarget(path), mBeside(BesideName(path)) {}

Staged::~Staged() {
  if (mHeld < 0) return;
  ::unlink(mBeside.c_str());
  ::close(mHeld);
}

std::error_code Staged::Write(std::string_view content) {
  struct stat old {};
  const bool there = ::lstat(mTarget.c_str(), &old) == 0;
  if (there && !S_ISREG(old.st_mode) && !S_ISLNK(old.st_mode))
    return std::make_error_code(std::errc::operation_not_permitted);
  SweepBeside(mTarget);
  Descriptor fd = OpenNew(mBeside);
  if (fd.Get() < 0) return LastError();
  ::flock(fd.Get(), LOCK_EX | LOCK_NB);
  const mode_t mode = there && S_ISREG(old.st_mode) ? (old.st_mode & 0777u) : 0644u;
  const std::error_code error = WriteNew(fd, content, mode);
  mHeld = fd.Take();
  return error;
}

std::error_code Staged::Commit() {
  const std::error_code error = Rename(mBeside, mTarget);
  if (!error) ::close(std::exchange(mHeld, -1));
  return error;
}

std::error_code Create(const fs::path& path, std::string_view content, fs::perms mode) {
  const Descriptor fd = OpenNew(path);
  if (fd.Get() < 0) return LastError();
  const std::error_code error = WriteNew(fd, content, static_cast<mode_t>(mode));
  if (error) ::unlink(path.c_str());
  FlushFolder(path.parent_path());
  return error;
}

std::error_code MakeFolder(const fs::path& path) {
  if (::mkdir(path.c_str(), 0755) != 0) return LastError();
  FlushFolder(path.parent_path());
  return {};
}

std::error_code Rename(const fs::path& from, const fs::path& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) return LastError();
  FlushFolder(to.parent_path());
  if (from.parent_path() != to.parent_path()) FlushFolder(from.parent_path());
  return {};
}

std::error_code Remove(const fs::path& path) {
  if (::unlink(path.c_str()) != 0) return LastError();
  FlushFolder(path.parent_path());
  return {};
}

std::uint64_t RandomNumber() {
  std::uint64_t number = 0;
  if (::getrandom(&number, sizeof number, 0) != sizeof number)
    number = static_cast<std::uint64_t>(::getpid()) * 0x9E3779B97F4A7C15u;
  return number;
}

std::optional<std::tm> LastModified(const fs::path& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return std::nullopt;
  return clock::LocalTime(info.st_mtime);
}

bool SetLastModified(const fs::path& path, const std::tm& local) {
  const std::optional<std::time_t> time = clock::MomentOf(local);
  if (!time) return false;
  const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{*time, 0}};
  return ::utimensat(AT_FDCWD, path.c_str(), times.data(), 0) == 0;
}

bool CopyLastModified(const fs::path& from, const fs::path& to) {
  struct stat info {};
  if (::stat(from.c_str(), &info) != 0) return false;
  const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, info.st_mtim};
  return ::utimensat(AT_FDCWD, to.c_str(), times.data(), 0) == 0;
}

}  // namespace tarnwick::files
