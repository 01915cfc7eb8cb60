// The pages of the help: which there are, what they hold, and how they look. They are built into the program,
// so that each release shows its own.
//
// A page is HTML in UTF-8 as far as QTextBrowser knows it. Its <title> names it in the contents, and
// so does each <h2> that holds an <a name>, below the page.
#pragma once

#include <QFont>
#include <QPalette>
#include <QString>
#include <QUrl>
#include <array>
#include <vector>

namespace tarnwick::qt {

/// File names of the pages, in the order of the contents.
inline constexpr std::array kHelpTopics{"Step1.htm", "Step2.htm",      "Step3.htm",
                                        "Step4.htm", "WebUpdates.htm", "Support.htm"};

bool IsHelpTopic(const QString& topic);

/// The page `topic`; empty when it is no known topic.
QString ReadHelpPage(const QString& topic);

struct HelpEntry {
  QString title;
  QUrl address;  ///< The page, or a section of it.
};
/// The page itself, then its sections.
std::vector<HelpEntry> EntriesOf(const QString& html, const QString& topic);

/// The messages that the page explains, as it words them.
QStringList TermsOf(const QString& html);

/// The style of all pages, in the colours of `palette` and in proportion to `font`.
QString HelpStyle(const QPalette& palette, const QFont& font);

}  // namespace tarnwick::qt
