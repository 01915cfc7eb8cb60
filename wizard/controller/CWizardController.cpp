#include "wizard/CWizardController.h"

#include <string>
#include <utility>

#include "platform/modDebug.h"
#include "platform/ui.h"
#include "programmer/modProgrammer.h"
#include "settings/HelpTopics.h"

namespace tarnwick {

CWizardController::CWizardController(IWizardFrame& frame, WizardHooks hooks, const PageFactories& pages) {
  // The log belongs to the folder that the program was started in, and the settings change folders.
  OpenDebugLog();
  mWizard = std::make_unique<CWizard>(frame, std::move(hooks));
  mWizard->ClientHandle(this);
  mWizard->AddPage(pages[0](), "One");
  mWizard->AddPage(pages[1](), "Two");
  mWizard->AddPage(pages[2](), "Three");
  mWizard->AddPage(pages[3](), "Four");
  mWizard->Start();
}

void CWizardController::OnRequestHelp() {
  const std::int16_t step = mWizard->CurrentStep();
  if (step >= 1 && step <= 4) ShowHelpTopic("Step" + std::to_string(step) + ".htm");
}

void CWizardController::OnCancel(bool& cancel) {
  if (gVerifying) {
    gCancelVerify = true;
    cancel = true;
    mWizard->Frame().Enabled(FrameButton::cmdTerminate, false);
  } else if (gProgramming) {
    cancel = true;
    AskToCancelProgramming();
  } else {
    cancel = ui::MessageBox("Are you sure you want to Exit the program?", ui::Buttons::YesNo,
                            ui::Icon::Question) != ui::Answer::Yes;
    if (!cancel) CloseDebugLog();
  }
}

void CWizardController::AskToCancelProgramming() {
  IWizardFrame& frame = mWizard->Frame();
  frame.Enabled(FrameButton::cmdTerminate, false);
  const ui::Answer answer = ui::MessageBox(kCancelProgramming, ui::Buttons::YesNo, ui::Icon::Critical);
  if (answer == ui::Answer::Yes) {
    gCancelProgram = true;
  } else {
    frame.Enabled(FrameButton::cmdTerminate, true);
  }
}

}  // namespace tarnwick
