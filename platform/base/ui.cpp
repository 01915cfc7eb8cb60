#include "platform/ui.h"

#include <array>

#include "platform/contain.h"
#include "platform/record.h"

namespace tarnwick::ui {
namespace {

/// Nobody is there: questions are declined.
class Nobody final : public IUserInterface {
 public:
  Answer MessageBox(std::string_view, Buttons buttons, Icon) override {
    switch (buttons) {
      case Buttons::YesNo:
      case Buttons::NoYes:
        return Answer::No;
      case Buttons::RetryCancel:
        return Answer::Cancel;
      case Buttons::Ok:
        break;
    }
    return Answer::Ok;
  }
  std::string InputBox(std::string_view, std::string_view, std::string_view) override { return {}; }
  void PumpEvents() override {}
  void PumpPainting() override {}
  void Beep() override {}
};

Nobody gNobody;

IUserInterface& User() {
  return Seam<IUserInterface>::UsedOr(gNobody);
}

const char* NameOf(Answer answer) {
  constexpr std::array<const char*, 5> kNames{"OK", "Yes", "No", "Retry", "Cancel"};
  return kNames[static_cast<std::size_t>(answer)];
}

/// Into the record: what was shown, and what the user made of it.
void NoteBox(std::string_view text, std::string_view answer) {
  Contain([&] { record::Line(std::string("box: ").append(text).append(" -> ").append(answer)); });
}

}  // namespace

Answer MessageBox(std::string_view text, Buttons buttons, Icon icon) {
  const Answer answer = User().MessageBox(text, buttons, icon);
  NoteBox(text, NameOf(answer));
  return answer;
}
std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) {
  const std::string answer = User().InputBox(prompt, title, proposed);
  NoteBox(prompt, answer.empty() ? std::string_view("no answer") : answer);
  return answer;
}
void PumpEvents() {
  User().PumpEvents();
}
void PumpPainting() {
  User().PumpPainting();
}
void Beep() {
  User().Beep();
}

}  // namespace tarnwick::ui
