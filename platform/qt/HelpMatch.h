// Finding in the help what a message says: the one matcher of boxes and of the search.
#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace tarnwick::qt {

/// What finds `words` in a page, whatever stands there for the ports, the numbers and the names in brackets
/// of this case, and however blanks, signs and letters are set. Words without a letter are found as they are.
QRegularExpression MatcherOf(const QString& words);

/// The one of `terms` that tells of `message`: it has the longest run of words in common with it, of two at
/// least. Empty when there is none.
QString TermOf(const QStringList& terms, const QString& message);

}  // namespace tarnwick::qt
