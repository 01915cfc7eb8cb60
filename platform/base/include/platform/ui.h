// The user, as the rules of the program see one: boxes to answer, a beep, and pending events.
#pragma once

#include <string>
#include <string_view>

#include "platform/seam.h"

namespace tarnwick::ui {

/// The buttons of a box. The one named first is the default button.
enum class Buttons { Ok, YesNo, RetryCancel, NoYes };
enum class Icon { Exclamation, Critical, Question, Information };
enum class Answer { Ok, Yes, No, Retry, Cancel };

/// What stands between the rules and the window system. Everything runs on the one thread.
class IUserInterface {
 public:
  virtual ~IUserInterface() = default;

  /// Shows a modal box titled with the program's name and waits for the answer. Closing the box
  /// by Escape or its close box answers No or Cancel where there is one, else Ok.
  virtual Answer MessageBox(std::string_view text, Buttons buttons, Icon icon) = 0;

  /// Asks for a line of text. An empty answer is also what cancelling gives.
  virtual std::string InputBox(std::string_view prompt, std::string_view title,
                               std::string_view proposed) = 0;

  /// Handles the window system's pending events once; the way long work stays responsive.
  virtual void PumpEvents() = 0;

  /// Paints what is due, and leaves what the user did meanwhile pending: for waits inside an operation
  /// of the platform, in which nothing else may start.
  virtual void PumpPainting() = 0;

  virtual void Beep() = 0;
};

// The user is put in place by `Seam<IUserInterface>`. Until then boxes answer with their last button and
// nothing is shown.

Answer MessageBox(std::string_view text, Buttons buttons = Buttons::Ok, Icon icon = Icon::Exclamation);
std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed);
void PumpEvents();
void PumpPainting();
void Beep();

}  // namespace tarnwick::ui
