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
IUserInterface* gUser = &gNobody;

}  // namespace

void Install(IUserInterface& user) {
  gUser = &user;
}
void Uninstall() {
  gUser = &gNobody;
}

Answer MessageBox(std::string_view text, Buttons buttons, Icon icon) {
  return gUser->MessageBox(text, buttons, icon);
}
std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) {
  return gUser->InputBox(prompt, title, proposed);
}
void PumpEvents() {
  gUser->PumpEvents();
}
void PumpPainting() {
  gUser->PumpPainting();
}
void Beep() {
  gUser->Beep();
}

}  // namespace tarnwick::ui
