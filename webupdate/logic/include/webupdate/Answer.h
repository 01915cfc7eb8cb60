// What an answer of the site is. One judgement for the catalogue, for a package, and for those who make a
// site.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/http.h"

namespace tarnwick {

enum class AnswerKind {
  Good,
  Page,     ///< A web page in place of the file: some networks answer so until the user has signed in.
  Refused,  ///< By status or by a page of the site that says so.
  Missing,  ///< The site does not have the file.
  Failed,   ///< The site, or something on the way, is out of order.
  TooLarge,
  BrokenOff,
  None,     ///< No server answered.
  GivenUp,  ///< By the user.
  Empty,
};

/// What a whole answer's content is: good, empty, a refusal or a page. Neither a package nor a catalogue
/// begins with "<", whatever blanks and marks stand in front of it.
AnswerKind JudgeContent(std::string_view content);
/// The kind of an answer with a status that brings no content, and of one that was not whole.
AnswerKind JudgeStatus(std::int32_t status);
AnswerKind JudgeFailure(const http::Cause& cause);

/// A plain line for the user; empty for a good answer.
std::string AnswerLine(AnswerKind kind);

}  // namespace tarnwick
