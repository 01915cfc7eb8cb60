#include "platform/ui.h"

namespace tarnwick::ui {
namespace {

/// Nobody is there: questions are declined.
class Nobody final : public IUserInterface {
 public:
  Answer MessageBox(std::string_view, Buttons buttons, Icon) override {
    switch (buttons) {
      case Buttons::YesNo:
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

}  // namespace

Answer MessageBox(std::string_view text, Buttons buttons, Icon icon) {
  return User().MessageBox(text, buttons, icon);
}
std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) {
  return User().InputBox(prompt, title, proposed);
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
