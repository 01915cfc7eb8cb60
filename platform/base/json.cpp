#include "platform/json.h"

#include <array>
#include <charconv>

#include "platform/codepage.h"

namespace tarnwick {
namespace {

/// A text can be as long as a file: it is written in parts of so many bytes, so that no whole one is copied.
constexpr std::size_t kTextPart = 4096;

}  // namespace

void JsonLine::Open(char bracket) {
  Separate();
  std::fputc(bracket, mOut);
  mFirst = true;
}

void JsonLine::Close(char bracket) {
  std::fputc(bracket, mOut);
  mFirst = false;
}

void JsonLine::Key(std::string_view name) {
  Utf8(name);
  std::fputc(':', mOut);
  mFirst = true;
}

void JsonLine::Value(double value) {
  std::array<char, 64> digits;
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  Plain({digits.data(), result.ptr});
}

void JsonLine::Value(const std::string& value) {
  Separate();
  std::fputc('"', mOut);
  for (std::size_t at = 0; at < value.size(); at += kTextPart) {
    Escape(text::ToUtf8(std::string_view(value).substr(at, kTextPart)));
  }
  std::fputc('"', mOut);
}

void JsonLine::Shown(const std::string& text) {
  text::IsUtf8(text) ? Utf8(text) : Value(text);
}

void JsonLine::Utf8(std::string_view text) {
  Separate();
  std::fputc('"', mOut);
  Escape(text);
  std::fputc('"', mOut);
}

void JsonLine::Escape(std::string_view text) {
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      std::fprintf(mOut, "\\%c", c);
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::fprintf(mOut, "\\u%04x", static_cast<unsigned>(c));
    } else {
      std::fputc(c, mOut);
    }
  }
}

void JsonLine::Separate() {
  if (!mFirst) std::fputc(',', mOut);
  mFirst = false;
}

void JsonLine::Plain(std::string_view value) {
  Separate();
  std::fwrite(value.data(), 1, value.size(), mOut);
}

}  // namespace tarnwick
