#include "HexLine.h"

namespace tarnwick {
namespace {

constexpr std::size_t kShortest = 11;

/// Two digits as one byte; above 0xFF when one of them is no digit.
inline unsigned Pair(const char* digits) {
  return (static_cast<unsigned>(HexDigit(digits[0])) << 4) | HexDigit(digits[1]);
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

}  // namespace tarnwick
