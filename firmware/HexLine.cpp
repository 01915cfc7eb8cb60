#include "HexLine.h"

#include "platform/text.h"

namespace tarnwick {
namespace {

constexpr std::size_t kShortest = 11;

/// For each pair of characters the byte that they are as hexadecimal digits, or a value above 0xFF when one
/// of them is no digit. The first character is the low half of the index. The table is large, yet a package
/// holds few pairs but those of digits, so that little of it is read and that little stays in the
/// processor's cache.
struct PairTable {
  HexDigitValue values[0x10000];
};
constexpr PairTable kPairs = [] {
  PairTable table{};
  for (unsigned second = 0; second < 0x100; ++second) {
    const unsigned low = kHexDigits[second];
    for (unsigned first = 0; first < 0x100; ++first) {
      table.values[second << 8 | first] = static_cast<HexDigitValue>(kHexDigits[first] * 0x10u | low);
    }
  }
  return table;
}();

inline unsigned Pair(const char* digits) {
  const auto first = static_cast<unsigned char>(digits[0]);
  const auto second = static_cast<unsigned char>(digits[1]);
  return kPairs.values[first | second << 8];
}

}  // namespace

QalError HexLine::ParseHexLine(std::string_view line) {
  if (line.size() < kShortest) return QalError::HexTooShort;
  const std::size_t length = Pair(line.data() + 1) & 0xFF;
  if (line.size() != kShortest + 2 * length) return QalError::HexWrongLength;

  unsigned seen = 0;
  unsigned sum = 0;
  const std::size_t checkSum = kData + length;
  const char* digits = line.data() + 1;
  for (std::size_t i = 0; i <= checkSum; ++i, digits += 2) {
    const unsigned pair = Pair(digits);
    seen |= pair;
    sum += pair;
    mBytes[i] = static_cast<std::uint8_t>(pair);
  }
  // A bad digit counts as 0 in all the tests, and is reported only when they come out right with it.
  if (LineCheckSum(sum - mBytes[checkSum]) != mBytes[checkSum]) return QalError::HexCheckSum;
  if (seen > 0xFF) return QalError::HexInvalidCharacter;
  return mBytes[3] > 1 ? QalError::HexInvalidType : QalError::None;
}

// The record itself tells where its line should end. That it does is sure once all characters before
// are digits, so that the line end need not be searched for.
std::size_t HexLine::ParseGoodLine(std::string_view text) {
  if (text.size() < kShortest || text[0] != ':') return 0;
  const std::size_t length = kShortest + 2 * std::size_t{Pair(text.data() + 1) & 0xFF};
  if (text.size() < length + text::kLineEnd.size() || text[length] != '\r' || text[length + 1] != '\n')
    return 0;
  return ParseHexLine(text.substr(0, length)) == QalError::None ? length + text::kLineEnd.size() : 0;
}

}  // namespace tarnwick
