// The wizard engine: an ordered table of pages, the one on view, and the walk from page to page.
//
// Generic: all it knows of its pages, its owner and its window are the three interfaces beside this
// header. One thread; the only re-entry is by pumped events, and `Stepping` makes it harmless.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "wizard/IWizardController.h"
#include "wizard/IWizardFrame.h"
#include "wizard/IWizardPage.h"

namespace tarnwick {

/// What designates a step: nothing, a step number, or text. Text that reads as a number is a step
/// number; any other text that is not empty is a key.
using Designation = std::variant<std::monostate, double, std::string>;

/// What the program does at the wizard's start and finish.
struct WizardHooks {
  std::function<void()> loadSettings;
  std::function<void()> saveSettings;
};

class CWizard {
 public:
  /// `frame` must outlive the wizard; it is bound to it here. Runs `Form_Initialize`.
  CWizard(IWizardFrame& frame, WizardHooks hooks);
  ~CWizard();
  CWizard(const CWizard&) = delete;
  CWizard& operator=(const CWizard&) = delete;

  std::int16_t LastStep() const { return mLastStep; }
  std::int16_t NextStep() const { return mNextStep; }
  /// Redirects the step in progress; outside a step, or with a designation that resolves to no step,
  /// nothing.
  void NextStep(const Designation& step);
  std::int16_t CurrentStep() const { return mCurrentStep; }
  /// As `StepTo`.
  void CurrentStep(const Designation& step);
  bool Frozen() const { return mFrozen; }
  /// Locks the user out of the frame or lets them in again, and pumps events once. Does not nest:
  /// the first false clears it. On step 4 the terminate button stays live.
  void Frozen(bool frozen);
  /// Appends a page, which the wizard then owns until `finish`. A page whose key is there already is
  /// dropped in silence.
  void AddPage(std::unique_ptr<IWizardPage> page, const Designation& key = {});
  /// The page of a step, or none.
  IWizardPage* PageHandle(const Designation& index);
  std::int16_t StepCount() const { return mStepCount; }
  IWizardController* ClientHandle() const { return mClientHandle; }
  /// Only outside a step. None runs `finish`.
  void ClientHandle(IWizardController* controller);
  /// Goes straight to a step, touching no page between. Only outside a step.
  void StepTo(const Designation& step);
  /// Loads the frame, goes to the first page and shows the frame. Once.
  void Start(const Designation& firstStep = {});
  /// Saves the settings and takes the pages down. Not during a step. Does not end the program.
  void finish();
  /// The walk: -1 back, +1 forward, 0 to `NextStep`. Lost when a step is in progress.
  void Step(std::int32_t direction);
  bool FinishedLoading() const { return mFinishedLoading; }
  void TransferFocus();
  /// Acts on a released key; `keyCode` becomes 0 when it was handled. `shift` is 0 for none, 4 for Alt.
  void TranslateKey(std::int16_t& keyCode, std::int16_t shift);

  // Events of the frame's window.
  void cmdHelp_Click();
  void cmdStepBack_Click();
  void cmdStepFwd_Click();
  void cmdTerminate_Click();
  void picPage_GotFocus();
  /// The frame is asked to close; `cancel` comes back true when it stays open.
  void Form_QueryUnload(bool& cancel);
  /// The frame was let go: shows the shutdown label for about a second and ends the program.
  void Form_Unload();

  /// The frame, for the pages and the controller: they set captions and states of its buttons.
  IWizardFrame& Frame() { return mFrame; }

 private:
  struct StepRecord {
    Designation Key;
    std::unique_ptr<IWizardPage> Page;
    WindowHandle OldParent = nullptr;
    bool Loaded = false;
  };

  IWizardFrame& mFrame;
  WizardHooks mHooks;
  bool mFinishedLoading = false;
  bool mFrozen = false;
  std::optional<FrameButton> mLastButton;
  bool mCenterOnResize = true;
  bool mStepping = false;
  std::vector<StepRecord> mSteps;
  IWizardController* mClientHandle = nullptr;
  std::int16_t mCurrentStep = -1;
  std::int16_t mLastStep = -1;
  std::int16_t mNextStep = -1;
  std::int16_t mStepCount = -1;
};

}  // namespace tarnwick
