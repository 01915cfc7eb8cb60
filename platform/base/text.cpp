#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace tarnwick::text {
namespace {

constexpr unsigned char UpperByte(unsigned char c) {
  if (c >= 'a' && c <= 'z') return static_cast<unsigned char>(c - 0x20);
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<unsigned char>(c - 0x20);
  if (c == 0x9A || c == 0x9C || c == 0x9E) return static_cast<unsigned char>(c - 0x10);
  if (c == 0xFF) return 0x9F;
  return c;
}

constexpr std::array<unsigned char, 256> kUpper = [] {
  std::array<unsigned char, 256> table{};
  for (unsigned i = 0; i < 256; ++i) table[i] = UpperByte(static_cast<unsigned char>(i));
  return table;
}();

char UpperChar(char c) {
  return static_cast<char>(kUpper[static_cast<unsigned char>(c)]);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Length of the number at the start of `text` (sign included), 0 when there is none.
std::size_t NumberLength(std::string_view text) {
  std::size_t i = 0;
  std::size_t digits = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  for (; i < text.size() && IsDigit(text[i]); ++i) ++digits;
  if (i < text.size() && text[i] == '.') {
    ++i;
    for (; i < text.size() && IsDigit(text[i]); ++i) ++digits;
  }
  return digits == 0 ? 0 : i;
}

template <class Int>
Int RoundTo(double value) {
  if (std::isnan(value)) return 0;
  constexpr double low = std::numeric_limits<Int>::min();
  constexpr double high = std::numeric_limits<Int>::max();
  return static_cast<Int>(std::clamp(std::nearbyint(value), low, high));
}

std::string_view TrimLeft(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text;
}

std::string_view TrimRight(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

std::string_view Trim(std::string_view text) {
  return TrimRight(TrimLeft(text));
}

std::string Upper(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), UpperChar);
  return result;
}

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return UpperChar(x) == UpperChar(y); });
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t at = text.find(separator);
    fields.push_back(text.substr(0, at));
    if (at == std::string_view::npos) return fields;
    text.remove_prefix(at + 1);
  }
}

bool NextLine(std::string_view& rest, std::string_view& line) {
  const std::size_t end = rest.find(kLineEnd);
  if (end == std::string_view::npos) return false;
  line = rest.substr(0, end);
  rest.remove_prefix(end + kLineEnd.size());
  return true;
}

std::string CleanLine(std::string_view line) {
  std::string clean(line);
  std::replace_if(
      clean.begin(), clean.end(), [](char c) { return c == '\r' || c == '\n' || c == '\t'; }, ' ');
  return std::string(Trim(clean));
}

KeyValue SplitKeyValue(std::string_view line) {
  const std::string clean = CleanLine(line);
  const std::size_t equals = clean.find('=');
  if (equals == std::string::npos) return {};
  const std::string_view all = clean;
  return {Upper(TrimRight(all.substr(0, equals))), std::string(Trim(all.substr(equals + 1)))};
}

double NumericPrefix(std::string_view text) {
  text = TrimLeft(text);
  text = text.substr(0, NumberLength(text));
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return 0.0;
  double value = 0.0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (error != std::errc::result_out_of_range) return value;
  // Only more digits than any type holds get here; a tiny fraction is 0, a huge whole part a bound.
  const bool negative = text.front() == '-';
  const std::string_view digits = text.substr(negative ? 1 : 0);
  const bool tiny = digits.find_first_not_of('0') >= digits.find('.');
  const double bound = tiny ? 0.0 : std::numeric_limits<double>::max();
  return negative ? -bound : bound;
}

bool IsNumeric(std::string_view text) {
  text = Trim(text);
  return !text.empty() && NumberLength(text) == text.size();
}

std::int32_t ToInt32(double value) {
  return RoundTo<std::int32_t>(value);
}
std::int16_t ToInt16(double value) {
  return RoundTo<std::int16_t>(value);
}

std::string Fixed2(double value) {
  std::array<char, 400> buffer{};
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 2);
  return error == std::errc() ? std::string(buffer.data(), end) : std::string();
}

}  // namespace tarnwick::text
