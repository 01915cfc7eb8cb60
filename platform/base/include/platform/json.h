// JSON as our command lines write it: one value at a time, straight to a stream, in UTF-8.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace tarnwick {

/// Writes one JSON value, member by member; commas come by themselves. Brackets are the caller's to close.
class JsonLine {
 public:
  explicit JsonLine(std::FILE* out) : mOut(out) {}

  /// "{" or "[".
  void Open(char bracket);
  void Close(char bracket);
  /// The name of the member whose value comes next.
  void Key(std::string_view name);
  template <class Type>
  void Member(std::string_view name, const Type& value) {
    Key(name);
    Value(value);
  }
  void Value(std::same_as<bool> auto value) { Plain(value ? "true" : "false"); }
  void Value(std::int32_t value) { Plain(std::to_string(value)); }
  /// In as few digits as tell it from any other number.
  void Value(double value);
  /// A text in Windows-1252, of any length.
  void Value(const std::string& value);
  /// A text with names of files in it, which are UTF-8 as a rule: one that is taken as UTF-8.
  void Shown(const std::string& text);
  /// A text that is UTF-8 already.
  void Utf8(std::string_view text);

 private:
  void Escape(std::string_view text);
  void Separate();
  void Plain(std::string_view value);

  std::FILE* mOut;
  bool mFirst = true;
};

}  // namespace tarnwick
