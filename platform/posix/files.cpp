#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <new>
#include <stdexcept>

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
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return mFd; }
  int Close() {
    const int fd = mFd;
    mFd = -1;
    return fd >= 0 ? ::close(fd) : 0;
  }

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

/// Writes `content` to `beside`, with the mode that `target` has.
std::error_code WriteBeside(const fs::path& beside, const fs::path& target, std::string_view content) {
  // What a killed program left there goes, and what someone put there is not written through.
  ::unlink(beside.c_str());
  Descriptor fd(::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (fd.Get() < 0) return LastError();
  struct stat old {};
  const mode_t mode = ::stat(target.c_str(), &old) == 0 ? (old.st_mode & 0777u) : 0644u;
  if (::fchmod(fd.Get(), mode) != 0) return LastError();
  if (const std::error_code error = WriteAll(fd.Get(), content)) return error;
  if (::fsync(fd.Get()) != 0 || fd.Close() != 0) return LastError();
  return {};
}

}  // namespace

bool FileExists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
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

std::error_code Append(const fs::path& path, std::string_view text) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const Descriptor fd(::open(path.c_str(), flags, 0644));
  struct stat info {};
  if (fd.Get() < 0 || ::fstat(fd.Get(), &info) != 0) return LastError();
  if (!S_ISREG(info.st_mode)) return Problem::NotOrdinary;
  return WriteAll(fd.Get(), text);
}

Staged::Staged(const fs::path& path) {
  std::error_code noLink;
  const fs::path real = fs::canonical(path, noLink);
  mTarget = noLink ? path : real;
  mBeside = mTarget;
  mBeside += ".new";
}

Staged::~Staged() {
  if (mWritten) ::unlink(mBeside.c_str());
}

std::error_code Staged::Write(std::string_view content) {
  std::error_code missing;
  const fs::file_type type = fs::status(mTarget, missing).type();
  if (type != fs::file_type::not_found && type != fs::file_type::regular) {
    return std::make_error_code(std::errc::operation_not_permitted);
  }
  mWritten = true;
  return WriteBeside(mBeside, mTarget, content);
}

std::error_code Staged::Commit() {
  const std::error_code error = Rename(mBeside, mTarget);
  if (!error) mWritten = false;
  return error;
}

std::error_code Replace(const fs::path& path, std::string_view content) {
  Staged file(path);
  const std::error_code error = file.Write(content);
  return error ? error : file.Commit();
}

std::error_code Rename(const fs::path& from, const fs::path& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) return LastError();
  FlushFolder(to.parent_path());
  return {};
}

std::error_code Remove(const fs::path& path) {
  if (::unlink(path.c_str()) != 0) return LastError();
  FlushFolder(path.parent_path());
  return {};
}

std::optional<std::tm> LastModified(const fs::path& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return std::nullopt;
  return clock::LocalTime(info.st_mtime);
}

bool SetLastModified(const fs::path& path, const std::tm& local) {
  std::tm wanted = local;
  wanted.tm_isdst = -1;
  std::time_t time = std::mktime(&wanted);
  if (time == -1) return false;
  // Where clocks go forward at midnight, that time of the day does not exist: it is the hour behind it.
  constexpr std::time_t kHour = 3600;
  if (wanted.tm_mday != local.tm_mday) time += kHour;
  const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{time, 0}};
  return ::utimensat(AT_FDCWD, path.c_str(), times.data(), 0) == 0;
}

}  // namespace tarnwick::files
