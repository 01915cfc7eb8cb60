#include "HelpPages.h"

#include <QFile>
#include <QFontInfo>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <algorithm>
#include <cmath>

#include "platform/qt/Contrast.h"

/// What is built into a library is reached once this was called, from outside of all namespaces.
static void InitPages() {
  Q_INIT_RESOURCE(pages);
}

namespace tarnwick::qt {
namespace {

/// The name by which links find a section; empty for one that has none.
QString AnchorOf(const QTextBlock& heading) {
  for (auto at = heading.begin(); !at.atEnd(); ++at) {
    const QStringList names = at.fragment().charFormat().anchorNames();
    if (!names.isEmpty()) return names.front();
  }
  return {};
}

/// `share` of `b` in `a`, from 0 to 1.
QColor Mix(const QColor& a, const QColor& b, double share) {
  const auto mix = [share](int x, int y) { return static_cast<int>(std::lround(x + (y - x) * share)); };
  return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

/// The palette's link colour, brought towards the text as far as it takes to be read: many dark
/// palettes leave links in the blue that was meant for paper.
QColor LinkColour(const QPalette& palette) {
  const QColor base = palette.color(QPalette::Base);
  const QColor text = palette.color(QPalette::Text);
  QColor link = palette.color(QPalette::Link);
  for (int i = 0; i < 10 && Contrast(link, base) < kReadable; ++i) link = Mix(link, text, 0.2);
  return link;
}

}  // namespace

bool IsHelpTopic(const QString& topic) {
  return std::any_of(kHelpTopics.begin(), kHelpTopics.end(),
                     [&](const char* known) { return topic == QLatin1String(known); });
}

QString ReadHelpPage(const QString& topic) {
  InitPages();
  QFile page(QStringLiteral(":/help/") + topic);
  return IsHelpTopic(topic) && page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
}

std::vector<HelpEntry> EntriesOf(const QString& html, const QString& topic) {
  QTextDocument document;
  document.setHtml(html);
  const QString title = document.metaInformation(QTextDocument::DocumentTitle);
  std::vector<HelpEntry> entries{{title.isEmpty() ? topic : title, QUrl(topic)}};
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    const QString anchor = block.blockFormat().headingLevel() == 2 ? AnchorOf(block) : QString();
    if (!anchor.isEmpty()) entries.push_back({block.text(), QUrl(topic + u'#' + anchor)});
  }
  return entries;
}

QStringList TermsOf(const QString& html) {
  static const QRegularExpression kTerm(QStringLiteral("<dt>(.*?)</dt>"));
  QStringList terms;
  for (auto found = kTerm.globalMatch(html); found.hasNext();) {
    terms.append(QTextDocumentFragment::fromHtml(found.next().captured(1)).toPlainText());
  }
  return terms;
}

QString HelpStyle(const QPalette& palette, const QFont& font) {
  const QColor base = palette.color(QPalette::Base);
  const QColor text = palette.color(QPalette::Text);
  const int size = QFontInfo(font).pixelSize();
  return QStringLiteral(
             "h1 { font-size: %1px; font-weight: 600; margin-top: 0px; margin-bottom: %5px; }"
             "h2 { font-size: %2px; font-weight: 600; margin-top: %6px; margin-bottom: %5px; }"
             "p, dd, dt { margin-top: 0px; margin-bottom: %5px; }"
             "table { margin-top: %5px; margin-bottom: %5px; }"
             "li { margin-bottom: %7px; }"
             "a[href] { color: %3; }"
             "dt { font-weight: 600; }"
             "dd { margin-bottom: %6px; }"
             "td, th { padding: %7px; border-bottom: 1px solid %8; }"
             "th { text-align: left; background-color: %4; }"
             "pre { margin-bottom: %5px; background-color: %4; white-space: pre-wrap; }")
      .arg(size * 3 / 2)
      .arg(size * 6 / 5)
      .arg(LinkColour(palette).name(), Mix(base, text, 0.09).name())
      .arg(size * 2 / 3)
      .arg(size * 4 / 3)
      .arg(size / 3)
      .arg(Mix(base, text, 0.25).name());
}

}  // namespace tarnwick::qt
