// The help at the window system: a window of its own that shows the help's pages.
#pragma once

#include <memory>

#include "platform/help.h"

namespace tarnwick::qt {

class HelpView;

/// Installs itself for its lifetime, which must lie within that of the QApplication.
///
/// The window is made at the first `Show`, stays beside the others without blocking them, and keeps its
/// place once closed. It shows the known topics and nothing else; an unknown topic shows nothing.
class HelpWindow final : public help::IHelpViewer {
 public:
  HelpWindow();
  ~HelpWindow() override;
  HelpWindow(const HelpWindow&) = delete;
  HelpWindow& operator=(const HelpWindow&) = delete;

  void Show(std::string_view topic) override;
  void ShowMessage(std::string_view message) override;

 private:
  HelpView& View();

  std::unique_ptr<HelpView> mView;  ///< None before the first `Show`.
};

}  // namespace tarnwick::qt
