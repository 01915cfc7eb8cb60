#include "webupdate/Answer.h"

#include <algorithm>

namespace tarnwick {
namespace {

char AsciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// True when `text` holds `word`, which is in upper case, in any case. Copies nothing: answers are large.
bool Holds(std::string_view text, std::string_view word) {
  const auto same = [](char a, char b) { return AsciiUpper(a) == b; };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), same) != text.end();
}

bool IsRefusal(std::string_view content) {
  // The first question is the fast one, and packages answer it.
  return content.find('<') != std::string_view::npos && Holds(content, "<HTML>") &&
         Holds(content, "UNAUTHORISED");
}

/// Blanks, line ends and byte order marks in front count for nothing; UTF-16 has bytes of 0 between.
bool IsPage(std::string_view content) {
  const std::size_t first =
      content.find_first_not_of(std::string_view(" \t\r\n\f\v\0\xEF\xBB\xBF\xFE\xFF", 12));
  return first != std::string_view::npos && content[first] == '<';
}

}  // namespace

AnswerKind JudgeContent(std::string_view content) {
  if (content.empty()) return AnswerKind::Empty;
  if (IsRefusal(content)) return AnswerKind::Refused;
  return IsPage(content) ? AnswerKind::Page : AnswerKind::Good;
}

AnswerKind JudgeStatus(std::int32_t status) {
  if (status == 401 || status == 403) return AnswerKind::Refused;
  if (status == 404 || status == 410) return AnswerKind::Missing;
  // "Network authentication required", and "proxy authentication required".
  return status == 511 || status == 407 ? AnswerKind::Page : AnswerKind::Failed;
}

AnswerKind JudgeFailure(const http::Cause& cause) {
  switch (cause.failure) {
    case http::Failure::BrokenOff:
      return AnswerKind::BrokenOff;
    case http::Failure::TooLarge:
      return AnswerKind::TooLarge;
    case http::Failure::GivenUp:
      return AnswerKind::GivenUp;
    case http::Failure::Packed:
    case http::Failure::Other:
      return AnswerKind::Failed;
    default:
      return AnswerKind::None;
  }
}

std::string AnswerLine(AnswerKind kind) {
  switch (kind) {
    case AnswerKind::Good:
      break;
    case AnswerKind::Page:
      return "A web page came in place of the file. Your network may want you to sign in with a web browser.";
    case AnswerKind::Refused:
      return "The site refused the name and the password.";
    case AnswerKind::Missing:
      return "The site does not have the file.";
    case AnswerKind::Failed:
      return "The site, or something on the way to it, is out of order.";
    case AnswerKind::TooLarge:
      return "The file is larger than 64 MB and was not taken.";
    case AnswerKind::BrokenOff:
      return "The answer broke off.";
    case AnswerKind::None:
      return "The site did not answer.";
    case AnswerKind::GivenUp:
      return "Given up.";
    case AnswerKind::Empty:
      return "The file is empty.";
  }
  return {};
}

}  // namespace tarnwick
