#include "platform/qt/QtText.h"

#include <algorithm>

#include "platform/codepage.h"

namespace tarnwick::qt {

using text::FromUnicode;
using text::ToUnicode;

QString Show(std::string_view text) {
  QString shown;
  shown.reserve(static_cast<qsizetype>(text.size()));
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    shown.append(QChar(ToUnicode(text[i])));
  }
  return shown;
}

QString ShowName(std::string_view name) {
  if (!text::IsUtf8(name)) return Show(name);
  return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()))
      .replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

QString Bounded(const QString& text, TextBound bound) {
  constexpr QChar kEllipsis = u'\u2026';
  QString shown;
  int lines = 0;
  for (qsizetype from = 0; from <= text.size(); ++lines) {
    if (lines == bound.lines) return shown + kEllipsis;
    qsizetype end = text.indexOf(u'\n', from);
    if (end < 0) end = text.size();
    const qsizetype length = end - from;
    const bool fits = length <= bound.lineLength;
    shown += QStringView(text).mid(from, fits ? length : bound.lineLength - 1);
    if (!fits) shown += kEllipsis;
    if (end < text.size()) shown += u'\n';
    from = end + 1;
  }
  return shown;
}

QString PlainTip(const QString& text) {
  constexpr TextBound kTip{.lines = 12, .lineLength = 400};
  if (text.isEmpty()) return text;
  return QStringLiteral("<p style=\"white-space:pre-wrap\">") + Bounded(text, kTip).toHtmlEscaped() +
         QStringLiteral("</p>");
}

std::string Read(const QString& shown) {
  std::string text(static_cast<std::size_t>(shown.size()), '\0');
  std::transform(shown.begin(), shown.end(), text.begin(), [](QChar c) { return FromUnicode(c.unicode()); });
  return text;
}

}  // namespace tarnwick::qt
