// One hex line of a package: reading it, and the rules shared with writing one.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "firmware/QalPackage.h"

namespace tarnwick {

/// 0 to 15, or `kNoHexDigit`, whose low four bits are 0: a bad digit counts as 0.
using HexDigitValue = std::uint16_t;
inline constexpr HexDigitValue kNoHexDigit = 0x100;

inline constexpr std::array<HexDigitValue, 256> kHexDigits = [] {
  std::array<HexDigitValue, 256> table{};
  table.fill(kNoHexDigit);
  for (unsigned i = 0; i < 10; ++i) table['0' + i] = static_cast<HexDigitValue>(i);
  for (unsigned i = 10; i < 16; ++i)
    table['A' + i - 10] = table['a' + i - 10] = static_cast<HexDigitValue>(i);
  return table;
}();

inline HexDigitValue HexDigit(char character) {
  return kHexDigits[static_cast<unsigned char>(character)];
}

/// The checksum byte of a record whose bytes, from the length to the last data byte, add up to `sum`.
constexpr std::uint8_t LineCheckSum(unsigned sum) {
  return static_cast<std::uint8_t>(0u - sum);
}

/// One record, decoded.
class HexLine {
 public:
  /// Decodes `line`, whose first character is the colon. The fields hold only without an error; an
  /// invalid type is one.
  QalError ParseHexLine(std::string_view line);

  /// Decodes the line that `text` begins with, if it is a record without an error. Its length with the
  /// line end, or 0 for any other line, of which nothing is told.
  std::size_t ParseGoodLine(std::string_view text);

  /// The end-of-file record, which says nothing.
  bool EndOfFile() const { return mBytes[3] == 1; }
  std::size_t FirstWord() const { return (std::size_t{mBytes[1]} << 8 | mBytes[2]) / 2; }
  /// Data bytes in pairs; an odd last one is not among them.
  std::size_t WordCount() const { return mBytes[0] / 2u; }
  /// Copies `count` of the words, from number `begin`.
  void CopyWords(std::size_t begin, std::size_t count, QalWord* to) const {
    static_assert(sizeof(QalWord) == 2);
    std::memcpy(to, &mBytes[kData + 2 * begin], 2 * count);
  }

 private:
  static constexpr std::size_t kData = 4;  ///< Length, address (2 bytes), type.
  static constexpr std::size_t kLongest = kData + 255 + 1;

  std::array<std::uint8_t, kLongest> mBytes;  ///< Up to and with the checksum of the last line decoded.
};

}  // namespace tarnwick
