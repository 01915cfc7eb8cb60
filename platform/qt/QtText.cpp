#include "platform/qt/QtText.h"

#include <algorithm>
#include <array>

namespace tarnwick::qt {
namespace {

/// Bytes 0x80 to 0x9F, where Windows-1252 differs from Latin-1. The five unused bytes map to the
/// control characters of the same number, as Windows itself does.
constexpr std::array<char16_t, 32> kHigh = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                            0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

QChar ToUnicode(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 && byte < 0xA0 ? QChar(kHigh[byte - 0x80u]) : QChar(byte);
}

char FromUnicode(QChar c) {
  const char16_t code = c.unicode();
  if (code < 0x80 || (code >= 0xA0 && code < 0x100)) return static_cast<char>(code);
  const auto found = std::find(kHigh.begin(), kHigh.end(), code);
  return found == kHigh.end() ? '?' : static_cast<char>(0x80 + (found - kHigh.begin()));
}

}  // namespace

QString Show(std::string_view text) {
  QString shown;
  shown.reserve(static_cast<qsizetype>(text.size()));
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    shown.append(ToUnicode(text[i]));
  }
  return shown;
}

std::string Read(const QString& shown) {
  std::string text(static_cast<std::size_t>(shown.size()), '\0');
  std::transform(shown.begin(), shown.end(), text.begin(), FromUnicode);
  return text;
}

}  // namespace tarnwick::qt
