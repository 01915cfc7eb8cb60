// The user at the window system: Qt's message box and input box, and its pending events.
#pragma once

#include "platform/ui.h"

namespace tarnwick::qt {

/// Installs itself for its lifetime, which must lie within that of the QApplication. Boxes belong to the
/// window of `BoxOwner` and block just that; they carry the program's name as title, and a Help button that
/// opens the help at their message, as F1 does.
class QtUser final : public ui::IUserInterface {
 public:
  QtUser() { Seam<ui::IUserInterface>::Install(*this); }
  ~QtUser() override { Seam<ui::IUserInterface>::Uninstall(); }
  QtUser(const QtUser&) = delete;
  QtUser& operator=(const QtUser&) = delete;

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override;
  std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) override;
  void PumpEvents() override;
  void PumpPainting() override;
  void Beep() override;
};

}  // namespace tarnwick::qt
