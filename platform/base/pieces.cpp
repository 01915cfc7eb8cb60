#include "platform/pieces.h"

#include <algorithm>
#include <cerrno>

namespace tarnwick::files {
namespace {

/// Small enough for the processor's cache, large enough that system calls do not count.
constexpr std::size_t kPiece = 64u << 10;

}  // namespace

PieceReader::PieceReader(const std::filesystem::path& path) : mFile(OpenToRead(path, mSize, mError)) {
  if (mFile) std::setvbuf(mFile.get(), nullptr, _IONBF, 0);
}

bool PieceReader::Next() {
  if (mError) return false;
  MakeRoom();
  const std::size_t got = std::fread(mBuffer.data() + mFilled, 1, mBuffer.size() - mFilled, mFile.get());
  mFilled += got;
  mRead += got;
  if (std::ferror(mFile.get()) != 0) {
    mError = {errno, std::generic_category()};
  } else if (got == 0 && mRead != mSize) {
    mError = Problem::Changed;
  }
  return got > 0 && !mError;
}

/// Moves what is left to the begin. A piece of which little was taken is doubled, so that a long one is
/// looked at a few times and not once for each block read, but not beyond the file.
void PieceReader::MakeRoom() {
  std::copy(mBuffer.data() + mTaken, mBuffer.data() + mFilled, mBuffer.data());
  mFilled -= mTaken;
  mTaken = 0;
  std::uintmax_t wanted = std::max<std::uintmax_t>(kPiece, 2 * std::uintmax_t{mFilled});
  if (mFilled <= mSize) wanted = std::min(wanted, mSize + 1);
  if (wanted > mBuffer.size()) mBuffer.resize(static_cast<std::size_t>(wanted));
}

}  // namespace tarnwick::files
