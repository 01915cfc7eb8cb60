#include "platform/FileLock.h"

#include <fcntl.h>
#include <unistd.h>

#include "posix.h"

namespace tarnwick {

FileLock::~FileLock() {
  if (mFd >= 0) ::close(mFd);
}

std::error_code FileLock::Open(const std::filesystem::path& file) {
  constexpr int kFlags = O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
  int fd = ::open(file.c_str(), O_RDWR | O_CREAT | kFlags, 0644);
  // Who may not write there can be a reader all the same, and learns at a claim why no more.
  const std::error_code readOnly = fd < 0 ? posix::LastError() : std::error_code();
  if (fd < 0) fd = ::open(file.c_str(), O_RDONLY | kFlags);
  if (fd < 0) return posix::LastError();
  if (mFd >= 0) ::close(mFd);
  mFd = fd;
  mReadOnly = readOnly;
  mFile = file;
  return {};
}

/// The lock belongs to the open file. To turn one kind into the other is one step, which leaves the old one
/// where the new one is not to be had.
std::error_code FileLock::Set(short kind) {
  struct flock whole {};
  whole.l_type = kind;
  whole.l_whence = SEEK_SET;
  if (::fcntl(mFd, F_OFD_SETLK, &whole) == 0) return {};
  return errno == EACCES ? std::make_error_code(std::errc::resource_unavailable_try_again)
                         : posix::LastError();
}

std::error_code FileLock::Share() {
  return Set(F_RDLCK);
}
std::error_code FileLock::Claim() {
  return mReadOnly ? mReadOnly : Set(F_WRLCK);
}
void FileLock::Release() {
  if (mFd >= 0) Set(F_UNLCK);
}

}  // namespace tarnwick
