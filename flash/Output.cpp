#include "flash/Output.h"

#include "platform/codepage.h"
#include "platform/signals.h"
#include "platform/text.h"

namespace tarnwick::flash {
namespace {

using namespace std::chrono_literals;

constexpr auto kAlive = 200ms;  ///< On a terminal.
constexpr auto kStream = 1s;    ///< As JSON.
constexpr auto kInLog = 10s;    ///< In a file, or wherever else lines stay.

/// Writes a text of several lines, each ended as the system ends them.
void PutLines(std::FILE* out, std::string_view text) {
  std::string whole(text);
  if (!whole.ends_with(text::kLineEnd)) whole += text::kLineEnd;
  std::string_view rest = whole, line;
  while (text::NextLine(rest, line)) std::fprintf(out, "%s\n", text::ForTerminal(line).c_str());
}

}  // namespace

void Output::Message(std::string_view text, std::string_view answer) {
  EndProgress();
  if (mForm == Form::Document) mTold.push_back({std::string(text), std::string(answer)});
  if (mForm == Form::Stream) {
    Event("message", [&](JsonLine& json) {
      json.Member("text", std::string(text));
      if (!answer.empty()) json.Member("answer", std::string(answer));
    });
  }
  if (!IsText()) return;
  PutLines(mMessages, text);
  if (!answer.empty()) PutLines(mMessages, "-> " + std::string(answer));
}

void Output::Question(std::string_view text) {
  EndProgress();
  PutLines(mMessages, text);
}

void Output::Prompt(std::string_view text) {
  std::fprintf(mMessages, "%s", std::string(text).c_str());
}

void Output::Note(std::string_view text) {
  Message(text, {});
}

void Output::Line(std::string_view text) {
  EndProgress();
  if (IsText()) PutLines(mResults, text);
}

void Output::Open() {
  if (!mOpened) mDocument.Open('{');
  mOpened = true;
}

void Output::Member(std::string_view name, const std::function<void(JsonLine&)>& value) {
  if (mForm != Form::Document) return;
  Open();
  mDocument.Key(name);
  value(mDocument);
}

void Output::Event(std::string_view kind, const std::function<void(JsonLine&)>& members) {
  if (mForm != Form::Stream) return;
  JsonLine json(mResults);
  json.Open('{');
  json.Member("event", std::string(kind));
  members(json);
  json.Close('}');
  std::fputc('\n', mResults);
  std::fflush(mResults);
}

void Output::Progress(const std::string& text, double share, bool now) {
  const bool live = IsText() && mResults == stdout && signals::ShowsTerminal();
  const auto moment = Clock::now();
  const auto pause = live       ? Clock::duration(kAlive)
                     : IsText() ? Clock::duration(kInLog)
                                : Clock::duration(kStream);
  if (!now && moment - mShown < pause) return;
  mShown = moment;
  Event("progress", [&](JsonLine& json) {
    json.Member("text", text);
    json.Member("share", share);
  });
  if (!IsText()) return;
  // What stands on the line is written over, its longer rest with blanks.
  std::fprintf(mResults, live ? "\r%-70s" : "%s\n", text::ForTerminal(text).c_str());
  std::fflush(mResults);
  mLineUnended = live;
}

void Output::EndProgress() {
  if (mLineUnended) std::fprintf(mResults, "\r%-70s\r", "");
  mLineUnended = false;
  std::fflush(mResults);
}

bool Output::End(Exit exit) {
  EndProgress();
  const auto status = static_cast<std::int32_t>(exit);
  Event("end", [status](JsonLine& json) { json.Member("exit", status); });
  if (mForm == Form::Document) {
    Member("messages", [this](JsonLine& json) {
      json.Open('[');
      for (const Told& each : mTold) {
        json.Open('{');
        json.Member("text", each.text);
        if (!each.answer.empty()) json.Member("answer", each.answer);
        json.Close('}');
      }
      json.Close(']');
    });
    Member("exit", [status](JsonLine& json) { json.Value(status); });
    mDocument.Close('}');
    std::fputc('\n', mResults);
  }
  return std::fflush(mResults) == 0 && std::ferror(mResults) == 0;
}

}  // namespace tarnwick::flash
