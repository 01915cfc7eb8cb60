// The record: what the program did and why something failed, in "Tarnwick.log" beside the program, for its
// owner and for whoever helps the owner. Text in UTF-8 that a person can read, a line a happening.
//
// It is always on once it was opened. Nothing here can stop the program or shows a message: a record that
// cannot be written is not written. Nothing secret belongs in it: no password, no user name of a site.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick::record {

/// Bytes that the file does not exceed; the next line begins a new one, and the old one is kept under
/// "Tarnwick.old.log", in place of the one before.
inline constexpr std::uintmax_t kLargest = 1u << 20;
/// Bytes of one line's text; what is longer is cut, with an ellipsis.
inline constexpr std::size_t kLongestLine = 16u << 10;

/// Begins to write into `folder`. Until then, and after `Close`, lines are dropped.
void Open(const std::filesystem::path& folder);
void Close();

/// Writes one line: local date and time, a blank, and `text`, Windows-1252 or UTF-8 as file names are. A line
/// break within it becomes " | ", any other control character "?".
void Line(std::string_view text);

/// Something that failed, and why: "failed: WHAT: CAUSE".
void Failure(std::string_view what, std::string_view cause);
void Failure(std::string_view what, const std::error_code& cause);

/// To be called in a `catch` clause: notes what was caught there and goes no further.
void Caught() noexcept;

/// The lines of a part of the record, such as a programming run; one part at a time, and a new one takes the
/// place of the last.
class Part {
 public:
  Part();
  ~Part();
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;
};

/// What the last `Part` holds, as it stands in the file; before the first, all since the opening.
std::string LastPart();

}  // namespace tarnwick::record
