// Text and number rules that every reader of the program shares.
//
// Text in memory is Windows-1252, one byte a character. No function here looks at the locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::text {

/// The line end of packages, settings, notes and messages.
inline constexpr std::string_view kLineEnd = "\r\n";

/// Cuts blanks (0x20 and nothing else) from both ends. The result views `text`.
std::string_view Trim(std::string_view text);

/// Upper case by Windows-1252: ASCII letters and the accented ones that have a capital there.
std::string Upper(std::string_view text);

/// A byte that is no letter, digit, sign or blank.
bool IsControl(char c);

/// Equal when both are compared in upper case.
bool EqualNoCase(std::string_view a, std::string_view b);

/// The parts between separators. Empty text is one empty field; `n` separators make `n + 1` fields.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// Takes the next line off `rest`: what stands before the first CR LF, which goes too.
/// False when no CR LF is left; text behind the last CR LF is no line. `line` views `rest`.
bool NextLine(std::string_view& rest, std::string_view& line);

/// A line as packages and settings read it: each CR, LF and TAB becomes a blank, then blanks are cut
/// from both ends.
std::string CleanLine(std::string_view line);

/// One "key = value" line, as packages and settings write it; cleaned before it is split.
struct KeyValue {
  std::string key;    ///< Before the first "=", blanks cut, in upper case. Empty without an "=".
  std::string value;  ///< Behind the first "=", blanks cut, case kept.
};
KeyValue SplitKeyValue(std::string_view line);

/// The number that `text` begins with: leading blanks skipped, optional sign, digits, optional
/// fraction. No exponent, no hexadecimal, no infinity. 0 when it begins with none.
double NumericPrefix(std::string_view text);

/// True when the whole of `text` is one number, blanks round it allowed. Empty text is none.
bool IsNumeric(std::string_view text);

/// Rounds to the nearest whole number, halves to the even neighbour; out of range, the nearest
/// bound; not a number, 0. The one place where the program rounds.
std::int32_t ToInt32(double value);
std::int16_t ToInt16(double value);

/// Decimal digits with exactly two behind the point ("3.10").
std::string Fixed2(double value);

}  // namespace tarnwick::text
