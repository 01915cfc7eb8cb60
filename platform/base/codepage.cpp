#include "platform/codepage.h"

#include <algorithm>
#include <array>

namespace tarnwick::text {
namespace {

/// Bytes 0x80 to 0x9F, where Windows-1252 differs from Latin-1. The five unused bytes map to the
/// control characters of the same number, as Windows itself does.
constexpr std::array<char16_t, 32> kHigh = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                            0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char Byte(unsigned value) {
  return static_cast<char>(static_cast<unsigned char>(value));
}

/// How many bytes the character at the begin of `text` takes; 0 when it is none.
std::size_t Utf8Length(std::string_view text) {
  const auto at = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  const auto follows = [&](std::size_t i) { return (at(i) & 0xC0u) == 0x80; };
  const unsigned first = at(0);
  const unsigned second = at(1);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4 || !follows(1)) return 0;
  if (first < 0xE0) return 2;
  if (first == 0xE0 && second < 0xA0) return 0;  // longer than needed
  if (first == 0xED && second > 0x9F) return 0;  // half of a pair
  if (first < 0xF0) return follows(2) ? 3 : 0;
  if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;
  return follows(2) && follows(3) ? 4 : 0;
}

}  // namespace

char16_t ToUnicode(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x80 && value < 0xA0 ? kHigh[value - 0x80u] : value;
}

char FromUnicode(char16_t character) {
  if (character < 0x80 || (character >= 0xA0 && character < 0x100)) return Byte(character);
  const auto found = std::find(kHigh.begin(), kHigh.end(), character);
  return found == kHigh.end() ? '?' : Byte(0x80u + static_cast<unsigned>(found - kHigh.begin()));
}

std::string ToUtf8(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    const unsigned code = ToUnicode(byte);
    if (code < 0x80) {
      result += Byte(code);
    } else if (code < 0x800) {
      result += {Byte(0xC0 | code >> 6), Byte(0x80 | (code & 0x3F))};
    } else {
      result += {Byte(0xE0 | code >> 12), Byte(0x80 | (code >> 6 & 0x3F)), Byte(0x80 | (code & 0x3F))};
    }
  }
  return result;
}

std::string ForTerminal(std::string_view text) {
  std::string harmless(text);
  const auto isControl = [](char byte) {
    const char16_t character = ToUnicode(byte);
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
  };
  std::replace_if(harmless.begin(), harmless.end(), isControl, '?');
  return ToUtf8(harmless);
}

std::string NamesForTerminal(std::string_view text) {
  if (!IsUtf8(text)) return ForTerminal(text);
  std::string harmless;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    // The control characters above 0x7F are these two bytes.
    const bool high = byte == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    harmless += high || byte < 0x20 || byte == 0x7F ? '?' : text[at];
    at += high ? 1 : 0;
  }
  return harmless;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace tarnwick::text
