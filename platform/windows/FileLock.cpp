#include "platform/FileLock.h"

#include <algorithm>
#include <vector>

#include "win32.h"

namespace tarnwick {
namespace {

// Bytes far behind any content, since what is locked here cannot be read by others.
constexpr DWORD kFar = 0x40000000;
constexpr DWORD kHeld = 0;  ///< Who holds the lock, as a reader or alone.
constexpr DWORD kGate = 1;  ///< Locked by whoever is about to change what it holds.

OVERLAPPED Place(DWORD byte) {
  OVERLAPPED place{};
  place.Offset = kFar + byte;
  return place;
}

bool Lock(HANDLE file, DWORD byte, DWORD kind) {
  OVERLAPPED place = Place(byte);
  return ::LockFileEx(file, kind | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0;
}

bool Unlock(HANDLE file, DWORD byte) {
  OVERLAPPED place = Place(byte);
  return ::UnlockFileEx(file, 0, 1, 0, &place) != 0;
}

/// Others are within the gate for a moment only.
bool EnterGate(HANDLE file) {
  for (int tries = 0; tries < 50; ++tries) {
    if (Lock(file, kGate, LOCKFILE_EXCLUSIVE_LOCK)) return true;
    ::Sleep(2);
  }
  return false;
}

/// The open files of all locks.
std::vector<int> gOpen;

void Close(int file) {
  std::erase(gOpen, file);
  ::CloseHandle(win32::HandleOf(file));
}

std::error_code Busy() {
  return std::make_error_code(std::errc::resource_unavailable_try_again);
}

}  // namespace

FileLock::~FileLock() {
  if (mFd != -1) Close(mFd);
}

std::error_code FileLock::Open(const std::filesystem::path& file) {
  constexpr DWORD kNoLink = FILE_FLAG_OPEN_REPARSE_POINT;
  win32::Handle handle =
      win32::OpenFile(file, GENERIC_READ | GENERIC_WRITE, win32::kShareAll, OPEN_ALWAYS, kNoLink);
  // Who may not write there can be a reader all the same, and learns at a claim why no more.
  const std::error_code readOnly = handle ? std::error_code() : win32::LastError();
  if (!handle) handle = win32::OpenFile(file, GENERIC_READ, win32::kShareAll, OPEN_EXISTING, kNoLink);
  BY_HANDLE_FILE_INFORMATION info{};
  if (!handle || ::GetFileInformationByHandle(handle.Get(), &info) == 0) return win32::LastError();
  if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
    return std::make_error_code(std::errc::too_many_symbolic_link_levels);
  if (mFd != -1) Close(mFd);
  mFd = win32::NumberOf(handle.Take());
  gOpen.push_back(mFd);
  mReadOnly = readOnly;
  mFile = file;
  return {};
}

/// The system cannot turn one kind into the other in a step. Nobody comes in between, since all pass the gate;
/// so what was given up for a claim that failed is to be had again.
std::error_code FileLock::Set(short kind) {
  const HANDLE file = win32::HandleOf(mFd);
  if (!EnterGate(file)) return Busy();
  bool held = false;
  while (Unlock(file, kHeld)) held = true;
  const bool done = Lock(file, kHeld, static_cast<DWORD>(kind));
  if (!done && held) Lock(file, kHeld, 0);
  Unlock(file, kGate);
  return done ? std::error_code() : Busy();
}

std::error_code FileLock::Share() {
  return Set(0);
}
std::error_code FileLock::Claim() {
  return mReadOnly ? mReadOnly : Set(LOCKFILE_EXCLUSIVE_LOCK);
}
void FileLock::Release() {
  while (mFd != -1 && Unlock(win32::HandleOf(mFd), kHeld)) {
  }
}

void win32::LetLocksGo() {
  while (!gOpen.empty()) Close(gOpen.back());
}

}  // namespace tarnwick
