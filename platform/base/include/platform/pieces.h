// A file read piece by piece, for those who need no more than a part of it at a time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/files.h"

namespace tarnwick::files {

/// Shows a file to one reader, from its begin to its end. What the reader leaves of a piece stands at
/// the begin of the next one, so that nothing is cut apart: a piece is as long as it has to be, and
/// memory is taken for the longest one alone.
class PieceReader {
 public:
  /// Opens `path`. Only an ordinary file is read.
  explicit PieceReader(const std::filesystem::path& path);

  /// Goes on to the next piece, which is longer than what was left of the last one. False at the end of
  /// the file, and when it cannot be opened or read. Throws when memory cannot be had.
  bool Next();
  /// The piece; valid until the next one.
  std::string_view Text() const { return std::string_view(mBuffer).substr(mTaken, mFilled - mTaken); }
  /// The reader is done with the first `count` bytes of the piece.
  void Take(std::size_t count) { mTaken += count; }
  /// Why the file could not be opened or not be read to its end; none as long as all went well. A file whose
  /// length is another at its end than it was at first has changed under the reader.
  std::error_code Error() const { return mError; }

 private:
  void MakeRoom();

  std::error_code mError;
  std::uintmax_t mSize = 0;  ///< Of the file when it was opened.
  Stream mFile;
  std::uintmax_t mRead = 0;  ///< Bytes read so far.
  std::string mBuffer;
  std::size_t mTaken = 0;
  std::size_t mFilled = 0;
};

}  // namespace tarnwick::files
