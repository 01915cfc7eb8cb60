// The program's code page, Windows-1252, seen from Unicode.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::text {

/// The character of a byte. The five unused bytes are the control characters of the same number.
char16_t ToUnicode(char byte);

/// The byte of a character; "?" for a character that the code page does not have.
char FromUnicode(char16_t character);

/// The same text in UTF-8.
std::string ToUtf8(std::string_view text);

/// The same with a "?" for each control character, as it may be written to a terminal.
std::string ForTerminal(std::string_view text);
/// The same for a text with names of files in it, which are UTF-8 as a rule: one that is taken as UTF-8.
std::string NamesForTerminal(std::string_view text);
/// True when `text` is well-formed UTF-8.
bool IsUtf8(std::string_view text);

}  // namespace tarnwick::text
