// A line of a package that is longer than most, read piece by piece. Only what belongs to a key is kept.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "platform/text.h"

namespace tarnwick {

class LongLine {
 public:
  /// A line of which more than so many bytes are there without an end is read in this way. No record is as
  /// long.
  static constexpr std::size_t kFrom = 4096;

  bool Begun() const { return mBegun; }

  /// The next piece of the line, without its end. Throws when memory cannot be had.
  void Add(std::string_view piece) {
    if (!mBegun) mColon = piece.starts_with(':');
    mBegun = true;
    while (!mEquals && !piece.empty()) {
      AddToKey(piece.front());
      piece.remove_prefix(1);
    }
    if (mKnown) mValue += piece;
  }

  /// Whether the whole line is one with a colon in front, and with no key.
  bool IsRecord() const { return mColon && !mEquals; }

  /// Key and value as `text::SplitKeyValue` gives them; nothing where no key is known. The next line begins.
  text::KeyValue Take() {
    text::KeyValue taken;
    if (mKnown) {
      taken.key = std::move(mKey);
      std::replace_if(mValue.begin(), mValue.end(), IsBlank, ' ');
      const std::string_view value = text::Trim(mValue);
      const auto begin = static_cast<std::size_t>(value.data() - mValue.data());
      mValue.resize(value.empty() ? 0 : begin + value.size());
      mValue.erase(0, value.empty() ? 0 : begin);
      taken.value = std::move(mValue);
    }
    *this = LongLine();
    return taken;
  }

 private:
  static constexpr std::array<std::string_view, 12> kKeys = {
      "FILEVER", "FILENAME",  "FILEDATE", "COMMENTS",     "MODELNUMBER", "MODELNAME",
      "HWREV",   "START_HEX", "END_HEX",  "V3_START_HEX", "V3_END_HEX",  "DEVICE_ADDRESS_VERSION"};
  static constexpr std::size_t kLongestKey = kKeys.back().size();

  static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

  void AddToKey(char c) {
    if (c == '=') {
      mEquals = true;
      mKey = text::Upper(mKey);
      mKnown = std::find(kKeys.begin(), kKeys.end(), mKey) != kKeys.end();
    } else if (IsBlank(c)) {
      mGap = !mKey.empty();
    } else if (mKey.size() <= kLongestKey) {
      if (std::exchange(mGap, false)) mKey += ' ';
      mKey += c;
    }
  }

  bool mBegun = false;
  bool mColon = false;
  bool mEquals = false;
  bool mKnown = false;
  bool mGap = false;  ///< Blanks came behind what there is of the key.
  std::string mKey;   ///< Up to one character more than any key has.
  std::string mValue;
};

}  // namespace tarnwick
