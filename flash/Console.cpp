#include "flash/Console.h"

#include <cstdio>

#include "flash/Arguments.h"
#include "platform/codepage.h"
#include "platform/signals.h"
#include "programmer/modProgrammer.h"

namespace tarnwick::flash {
namespace {

bool ReadLine(std::string& line) {
  line.clear();
  for (int c = std::fgetc(stdin); c != '\n'; c = std::fgetc(stdin)) {
    if (c == EOF) return std::clearerr(stdin), false;
    line += static_cast<char>(c);
  }
  return true;
}

ui::Answer AsAnswer(ui::Buttons buttons, bool yes) {
  if (buttons == ui::Buttons::YesNo || buttons == ui::Buttons::NoYes)
    return yes ? ui::Answer::Yes : ui::Answer::No;
  if (buttons == ui::Buttons::RetryCancel) return yes ? ui::Answer::Retry : ui::Answer::Cancel;
  return ui::Answer::Ok;
}

}  // namespace

Typing AtTerminal() {
  return signals::IsAttended() ? ReadLine : Typing();
}

Console::Console(Output& output, std::set<std::string> yes, Typing person)
    : mOutput(output), mYes(std::move(yes)), mPerson(output.IsText() ? std::move(person) : Typing()) {
  Seam<ui::IUserInterface>::Install(*this);
}

Console::~Console() {
  Seam<ui::IUserInterface>::Uninstall();
}

ui::Answer Console::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) {
  if (buttons == ui::Buttons::Ok) {
    mOutput.Message(text, {});
    // What good news asks for is to be done before the program looks again.
    if (icon == ui::Icon::Information && IsAttended()) {
      std::string line;
      mOutput.Prompt("[Enter] ");
      mPerson(line);
    }
    return ui::Answer::Ok;
  }
  return AsAnswer(buttons, AnswerOf(text));
}

bool Console::AnswerOf(std::string_view text) {
  PumpEvents();
  const struct Question* const question = QuestionOf(text);
  const bool named = question != nullptr && mYes.contains(std::string(question->name)) &&
                     ++mAnswered[question->name] <= question->most;
  if (named && !mEnding) {
    mOutput.Message(text, "Yes");
    return true;
  }
  if (IsAttended() && !mEnding) {
    mOutput.Question(text);
    return AskPerson();
  }
  mOutput.Message(text, "No");
  if (question != nullptr && !mEnding && !mYes.contains(std::string(question->name))) {
    mOutput.Note("Nobody is here to be asked. --yes=" + std::string(question->name) + " answers Yes.");
  }
  return false;
}

bool Console::AskPerson() {
  mAsking = true;
  std::string line;
  bool asking = true;
  while (asking) {
    mOutput.Prompt("[y/n] ");
    if (mPerson(line)) {
      asking = line != "y" && line != "n" && line != "yes" && line != "no";
    } else {
      // Ctrl-C answers nothing. Where the terminal has gone, or the system ends us, nobody is there any more.
      asking = signals::Take() == signals::Asked::Interrupt;
      line = "no";
      mOutput.Prompt("\n");
    }
  }
  mAsking = false;
  return line.front() == 'y';
}

std::string Console::InputBox(std::string_view prompt, std::string_view, std::string_view proposed) {
  if (!IsAttended()) return {};
  mOutput.Question(prompt);
  mOutput.Prompt("[" + text::ForTerminal(std::string(proposed)) + "] ");
  std::string line;
  if (!mPerson(line)) return {};
  return line.empty() ? std::string(proposed) : line;
}

void Console::PumpEvents() {
  switch (signals::Take()) {
    case signals::Asked::Nothing:
      return;
    case signals::Asked::Interrupt:
      return Stop(true);
    case signals::Asked::End:
      return Stop(false);
  }
}

void Console::Stop(bool asks) {
  if (mAsking) return;
  if (gVerifying) {
    gCancelVerify = mEnding = true;
  } else if (!gProgramming) {
    mEnding = true;
  } else if (!asks ||
             ui::MessageBox(kCancelProgramming, ui::Buttons::YesNo, ui::Icon::Critical) == ui::Answer::Yes) {
    gCancelProgram = mEnding = true;
  }
}

}  // namespace tarnwick::flash
