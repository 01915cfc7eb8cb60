// A small document model of a settings file: an ordered list of lines, read whole and written whole.
//
// There is no look-up by key; callers walk the lines. Comments, blank lines and the layout of a file
// are not kept: a document is either built to be saved or loaded to be read. What an INI file calls a
// section is the Group here, and what it calls a key is the Section.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// One line of the document.
struct INIline {
  std::string Group;    ///< The header it stands under, with its brackets; empty before the first.
  std::string Section;  ///< The key. On a header line that was loaded, the header text itself.
  std::string Value;
};

/// The lines in order, numbered from 1. Lines are shared: who got one may hold it after it was removed.
class INIlines {
 public:
  /// Appends a line and returns it.
  std::shared_ptr<INIline> Add(std::string_view Group, std::string_view Section = {},
                               std::string_view Value = {});
  /// Drops all lines. Always 0.
  std::int16_t Clear();
  /// The line at that position. A position outside 1 to `Count` is the caller's fault and raises
  /// `std::out_of_range`, here and in `Remove`.
  std::shared_ptr<INIline> Item(std::int32_t vntIndexKey) const;
  std::int32_t Count() const { return static_cast<std::int32_t>(mLines.size()); }
  /// Removes the line at that position; later ones move up.
  void Remove(std::int32_t vntIndexKey);
  /// Walks the lines in order, by a range-based `for`. Holds until a line is added or removed.
  const std::vector<std::shared_ptr<INIline>>& NewEnum() const { return mLines; }

 private:
  std::vector<std::shared_ptr<INIline>> mLines;
};

/// The document. A caller that got the lines may go on holding them after the document is gone.
class INIfile {
 public:
  /// A larger file, in bytes, counts as one that cannot be read.
  static constexpr std::uintmax_t kLargestFile = 1024 * 1024;

  /// The lines; made when there are none yet.
  std::shared_ptr<tarnwick::INIlines> INIlines();
  /// Puts another collection in place.
  void INIlines(std::shared_ptr<tarnwick::INIlines> lines) { mLines = std::move(lines); }

  /// True: `SaveFile` writes keys in upper case. A load always reads them so.
  bool UcaseSection() const { return mUcaseSection; }
  void UcaseSection(bool upper) { mUcaseSection = upper; }
  /// Blanks in front of each key that `SaveFile` writes.
  std::int32_t LeadingSpaces() const { return mLeadingSpaces; }
  void LeadingSpaces(std::int32_t blanks) { mLeadingSpaces = blanks; }
  /// Column, from 1, of the "=" in lines that `SaveFile` writes; a longer key moves it to the right.
  std::int32_t EqualPos() const { return mEqualPos; }
  void EqualPos(std::int32_t column) { mEqualPos = column; }

  /// Replaces the lines with what the file holds. A file that is missing or cannot be read gives an
  /// empty document; nothing is reported.
  void LoadFile(const std::filesystem::path& sFileName);
  /// Replaces the file with the lines, at once: whatever happens, the old contents or the new ones
  /// stand under the name. A save that is not possible is lost without a report and leaves the old
  /// file. An old file that `LoadFile` could not read is kept, under the name with ".old" behind it.
  void SaveFile(const std::filesystem::path& sFileName);

 private:
  std::string WrittenLine(const INIline& line) const;

  std::shared_ptr<tarnwick::INIlines> mLines;
  bool mUcaseSection = false;
  std::int32_t mLeadingSpaces = 3;
  std::int32_t mEqualPos = 17;
};

}  // namespace tarnwick
