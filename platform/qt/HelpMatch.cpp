#include "HelpMatch.h"

#include <algorithm>
#include <vector>

namespace tarnwick::qt {
namespace {

/// Words beyond these tell no two messages apart, and a text of any length is looked for in bounded time.
constexpr qsizetype kMostCharacters = 600;
constexpr int kFewestWords = 2;

/// The words that are the same in each case of a message.
QStringList WordsOf(const QString& text) {
  static const QRegularExpression kOfThisCase(QStringLiteral(R"(\[[^\]]*\]|\bCOM\d+|[^\p{L}']+)"),
                                              QRegularExpression::CaseInsensitiveOption);
  return text.left(kMostCharacters).split(kOfThisCase, Qt::SkipEmptyParts);
}

int LongestRun(const QStringList& a, const QStringList& b) {
  int longest = 0;
  std::vector<int> runs(static_cast<std::size_t>(b.size()) + 1);
  for (const QString& word : a) {
    // From behind, so that what stands before is still of the word before.
    for (qsizetype i = b.size(); i > 0; --i) {
      const auto at = static_cast<std::size_t>(i);
      runs[at] = word.compare(b[i - 1], Qt::CaseInsensitive) == 0 ? runs[at - 1] + 1 : 0;
      longest = std::max(longest, runs[at]);
    }
  }
  return longest;
}

}  // namespace

QRegularExpression MatcherOf(const QString& words) {
  QStringList parts;
  for (const QString& word : WordsOf(words)) parts.append(QRegularExpression::escape(word));
  const QString pattern = parts.isEmpty()
                              ? QRegularExpression::escape(words.left(kMostCharacters).simplified())
                              : parts.join(QStringLiteral(R"((?:\[[^\]]*\]|COM\d+|[^\p{L}'])+)"));
  return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption);
}

QString TermOf(const QStringList& terms, const QString& message) {
  const QStringList said = WordsOf(message);
  QString best;
  int most = kFewestWords - 1;
  for (const QString& term : terms) {
    const int run = LongestRun(WordsOf(term), said);
    if (run > most) best = term;
    most = std::max(most, run);
  }
  return best;
}

}  // namespace tarnwick::qt
