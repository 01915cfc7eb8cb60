// The user of tarnwick-flash: a person at a terminal, or the command line alone.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "flash/Output.h"
#include "platform/ui.h"

namespace tarnwick::flash {

/// Waits for one line that a person types, and takes it without its end. False when none comes: the input has
/// ended, or Ctrl-C was pressed.
using Typing = std::function<bool(std::string& line)>;
/// The person at the terminal that the program was started from; empty where nobody sits.
Typing AtTerminal();

/// In place as the user for its lifetime. A question is answered by --yes, else by the person, else with No;
/// then the output says which --yes would have answered it.
class Console final : public ui::IUserInterface {
 public:
  /// `person` is asked where there is one, and JSON is not what is written.
  Console(Output& output, std::set<std::string> yes, Typing person = AtTerminal());
  ~Console() override;
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override;
  std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) override;
  /// Looks for what the system or Ctrl-C asks, and acts as the window's close box does.
  void PumpEvents() override;
  void PumpPainting() override {}
  void Beep() override {}

  /// True when the user, or the system, has asked to end; nothing new is begun then.
  bool IsEnding() const { return mEnding; }
  /// A person is there to be asked.
  bool IsAttended() const { return mPerson != nullptr; }

 private:
  bool AnswerOf(std::string_view text);
  bool AskPerson();
  void Stop(bool asks);

  Output& mOutput;
  std::set<std::string> mYes;
  Typing mPerson;  ///< Empty where nobody can be asked.
  bool mEnding = false;
  bool mAsking = false;                       ///< While a question waits: no second one is put on top of it.
  std::map<std::string_view, int> mAnswered;  ///< How often the command line answered each question.
};

}  // namespace tarnwick::flash
