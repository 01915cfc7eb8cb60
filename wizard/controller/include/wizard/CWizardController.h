// The program's own side of the generic wizard: which pages it has, what help shows, and whether the
// frame may close.
#pragma once

#include <array>
#include <functional>
#include <memory>

#include "wizard/CWizard.h"

namespace tarnwick {

/// Makes one page. Pages are made after the settings were read, so they are asked for, not handed in.
using PageFactory = std::function<std::unique_ptr<IWizardPage>()>;
/// The pages "One", "Two", "Three" and "Four", in their order.
using PageFactories = std::array<PageFactory, 4>;

class CWizardController final : public IWizardController {
 public:
  /// The whole start of the program: debug log opened, wizard created and settings loaded, pages
  /// added, first page and frame shown. `frame` must outlive the controller.
  CWizardController(IWizardFrame& frame, WizardHooks hooks, const PageFactories& pages);

  void BeforeUILoad() override {}
  /// Never refuses.
  void BeforeStep(std::int32_t, bool&) override {}
  void AfterStep() override {}
  /// Shows the help topic of the page on view.
  void OnRequestHelp() override;
  /// During a run raises the flag that stops it, and keeps the frame; otherwise asks whether to exit.
  void OnCancel(bool& cancel) override;
  CWizard& WizardHandle() override { return *mWizard; }

 private:
  /// Asks whether to stop the programming run, with the terminate button dead meanwhile.
  void AskToCancelProgramming();

  std::unique_ptr<CWizard> mWizard;
};

}  // namespace tarnwick
