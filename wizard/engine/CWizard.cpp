// The wizard's life from start to end, its frame's events, keys and focus.
#include "wizard/CWizard.h"

#include <chrono>
#include <utility>

#include "platform/clock.h"
#include "platform/contain.h"
#include "platform/program.h"
#include "platform/ui.h"

namespace tarnwick {

CWizard::CWizard(IWizardFrame& frame, WizardHooks hooks) : mFrame(frame), mHooks(std::move(hooks)) {
  mFrame.Bind(*this);
  Form_Initialize();
}

CWizard::~CWizard() = default;

void CWizard::Form_Initialize() {
  mFrame.FrameCaption(program::Caption());
  Contain(mHooks.loadSettings);
}

void CWizard::ClientHandle(IWizardController* controller) {
  if (mStepping) return;
  mClientHandle = controller;
  if (controller == nullptr) finish();
}

void CWizard::Start(const Designation& firstStep) {
  if (mFinishedLoading || mStepCount < 1) return;
  Contain([&] { mFrame.LoadFrame(); });
  if (std::holds_alternative<std::monostate>(firstStep)) {
    Step(1);
  } else {
    if (ResolveStep(firstStep) == -1) return;
    StepTo(firstStep);
  }
  Contain([&] { mFrame.ShowFrame(); });
  mFinishedLoading = true;
}

void CWizard::finish() {
  if (mStepping) return;
  Contain(mHooks.saveSettings);
  if (IWizardPage* page = FindPage(mCurrentStep)) Contain([&] { mFrame.SetPageVisible(*page, false); });
  for (std::size_t row = 0; row < mSteps.size(); ++row) {
    IWizardPage* page = mSteps[row].Page.get();
    if (!mSteps[row].Loaded || page == nullptr) continue;
    Contain([&] { mFrame.DetachPage(*page, mSteps[row].OldParent); });
    Contain([&] { mFrame.UnloadPage(*page); });
    Retire(mSteps[row]);
  }
  mClientHandle = nullptr;
}

void CWizard::Retire(StepRecord& row) {
  if (row.Page) mRetired.push_back(std::move(row.Page));
}

void CWizard::Form_QueryUnload(bool& cancel) {
  cancel = mClosing;
  if (cancel) return;
  mClosing = true;
  Contain([&] { Client().OnCancel(cancel); });
  mClosing = !cancel;
  if (!cancel) finish();
}

void CWizard::Form_Unload() {
  using namespace std::chrono_literals;
  for (StepRecord& row : mSteps) Retire(row);
  mSteps.clear();
  Contain([&] { mFrame.ShowShutdown(); });
  for (int round = 0; round < 20; ++round) {
    Contain([&] { mFrame.PumpEvents(); });
    clock::Sleep(50ms);
  }
  program::End();
}

void CWizard::Frozen(bool frozen) {
  if (frozen != mFrozen) frozen ? mFrame.BeforeLock() : mFrame.BeforeUnlock();
  mFrozen = frozen;
  mFrame.Enabled(FrameButton::cmdHelp, !frozen);
  mFrame.Enabled(FrameButton::cmdStepBack, mCurrentStep != 1 && !frozen);
  mFrame.Enabled(FrameButton::cmdStepFwd, mCurrentStep != mStepCount && !frozen);
  // Step 4, not the last one: from there the user stops a running program or verify.
  mFrame.Enabled(FrameButton::cmdTerminate, mCurrentStep == 4 || !frozen);
  mFrame.PageAreaEnabled(!frozen);
  mFrame.SetWaitPointer(frozen);
  mFrame.PumpEvents();
}

void CWizard::LayoutFrame() {
  mFinishedLoading = false;
  IWizardPage* page = FindPage(mCurrentStep < 1 ? std::int16_t{1} : mCurrentStep);
  Contain([&] { mFrame.LayoutFrame(page, mCenterOnResize, mLastButton); });
  mFinishedLoading = true;
}

void CWizard::cmdHelp_Click() {
  mLastButton = FrameButton::cmdHelp;
  Contain([&] { Client().OnRequestHelp(); });
}

void CWizard::cmdStepBack_Click() {
  mLastButton = FrameButton::cmdStepBack;
  Step(-1);
}

void CWizard::cmdStepFwd_Click() {
  mLastButton = FrameButton::cmdStepFwd;
  Step(1);
}

void CWizard::cmdTerminate_Click() {
  mLastButton = FrameButton::cmdTerminate;
  mFrame.RequestClose();
}

void CWizard::picPage_GotFocus() {
  if (IWizardPage* page = FindPage(mCurrentStep)) Contain([&] { mFrame.FocusPage(*page); });
}

void CWizard::TranslateKey(std::int16_t& keyCode, std::int16_t shift) {
  constexpr std::int16_t kEnter = 13, kEscape = 27, kLeft = 37, kRight = 39;
  constexpr std::int16_t kNone = 0, kAlt = 4;
  if (mStepping) return;
  bool handled = false;
  if (keyCode == kEscape && shift == kNone) {
    if (mFrame.Enabled(FrameButton::cmdTerminate)) cmdTerminate_Click();
    handled = true;
  } else if (keyCode == kLeft && shift == kAlt) {
    if (mFrame.Enabled(FrameButton::cmdStepBack)) Step(-1);
  } else if (keyCode == kRight && shift == kAlt) {
    if (mFrame.Enabled(FrameButton::cmdStepFwd)) Step(1);
  } else if (keyCode == kEnter && shift == kNone) {
    handled = ClickDefaultButton();
    if (!handled) ui::Beep();
  }
  if (handled) keyCode = 0;
}

bool CWizard::ClickDefaultButton() {
  const auto ready = [&](FrameButton button) { return mFrame.Default(button) && mFrame.Enabled(button); };
  if (ready(FrameButton::cmdStepFwd)) {
    cmdStepFwd_Click();
  } else if (ready(FrameButton::cmdStepBack)) {
    cmdStepBack_Click();
  } else if (ready(FrameButton::cmdTerminate)) {
    cmdTerminate_Click();
  } else {
    return false;
  }
  return true;
}

void CWizard::TransferFocus() {
  if (mStepping) return;
  if (!mLastButton) mLastButton = FrameButton::cmdStepFwd;
  mFrame.TabPosition(FrameButton::cmdStepFwd, 0);
  mFrame.TabPosition(FrameButton::cmdTerminate, 1);
  mFrame.TabPosition(FrameButton::cmdHelp, 2);
  mFrame.TabPosition(FrameButton::cmdStepBack, 3);
  mFrame.PageAreaTabPosition(4);
  mFrame.FocusButton(*mLastButton);
}

}  // namespace tarnwick
