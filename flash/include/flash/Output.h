// What tarnwick-flash writes: sentences for a person, or JSON for a program.
//
// Results go to standard output, messages and questions to standard error; as JSON everything goes to
// standard output. Nothing that comes from a package, a file name or a device can steer a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "flash/Exit.h"
#include "platform/json.h"

namespace tarnwick::flash {

class Output {
 public:
  enum class Form {
    Text,
    Document,  ///< One JSON document, when it ends.
    Stream,    ///< One JSON object a line, while it works.
  };

  /// Both streams outlive it.
  explicit Output(Form form, std::FILE* results = stdout, std::FILE* messages = stderr)
      : mForm(form), mResults(results), mMessages(messages) {}

  /// A message of the program, Windows-1252, lines ended by CR LF; `answer` is what it was answered with,
  /// empty where it asks nothing.
  void Message(std::string_view text, std::string_view answer);
  /// The text of a question before its answer is known. Shown to a person alone.
  void Question(std::string_view text);
  /// What stands before the place where a person types.
  void Prompt(std::string_view text);
  /// A sentence of ours beside the messages.
  void Note(std::string_view text);
  /// A line of the result, for a person; `Member` and `Event` are the same for a program.
  void Line(std::string_view text);
  /// Writes a member of the document.
  void Member(std::string_view name, const std::function<void(JsonLine&)>& value);
  /// Writes one object of the stream: its kind and what `members` adds.
  void Event(std::string_view kind, const std::function<void(JsonLine&)>& members);
  /// How far the work has got: `text` as the window has it, and a share from 0 to 1. Shown on a terminal at
  /// once, else every ten seconds, as JSON every second; with `now`, before a long wait, everywhere at once.
  void Progress(const std::string& text, double share, bool now = false);
  /// The line of progress is done with.
  void EndProgress();
  /// The last of all. False when something could not be written.
  bool End(Exit exit);

  bool IsText() const { return mForm == Form::Text; }

 private:
  using Clock = std::chrono::steady_clock;

  struct Told {
    std::string text, answer;
  };

  void Open();

  const Form mForm;
  std::FILE* const mResults;
  std::FILE* const mMessages;
  JsonLine mDocument{mResults};
  bool mOpened = false;
  bool mLineUnended = false;  ///< A line of progress stands on the terminal.
  std::vector<Told> mTold;    ///< For the document, which has them as one member.
  Clock::time_point mShown{};
};

}  // namespace tarnwick::flash
