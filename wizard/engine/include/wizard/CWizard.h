// The wizard engine: an ordered table of pages, the one on view, and the walk from page to page.
//
// Generic: all it knows of its pages, its owner and its window are the three interfaces beside this
// header. One thread; the only re-entry is by pumped events, and `Stepping` makes it harmless.
#pragma once

#include <cstddef>
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

  /// The step left by the last completed step; -1 before the first.
  std::int16_t LastStep() const { return mLastStep; }
  /// Target of the step in progress; -1 once a step has completed, the target still after a refusal.
  std::int16_t NextStep() const { return mNextStep; }
  /// Redirects the step in progress; outside a step, or with a designation that resolves to no step,
  /// nothing.
  void NextStep(const Designation& step);
  /// Number of the page on view, from 1; 0 on the way to the first page, -1 before that.
  std::int16_t CurrentStep() const { return mCurrentStep; }
  /// As `StepTo`.
  void CurrentStep(const Designation& step);
  bool Frozen() const { return mFrozen; }
  /// Locks the user out of the frame or lets them in again, and pumps events once. Does not nest:
  /// the first false clears it. On step 4 the terminate button stays live.
  void Frozen(bool frozen);
  /// Appends a page, which the wizard then owns until `finish`. A page whose key is there already is
  /// dropped in silence; one without a key or with a numeric key is never a duplicate.
  void AddPage(std::unique_ptr<IWizardPage> page, const Designation& key = {});
  /// The page of a step, or none.
  IWizardPage* PageHandle(const Designation& index);
  /// Number of pages; -1, not 0, before the first.
  std::int16_t StepCount() const { return mStepCount; }
  IWizardController* ClientHandle() const { return mClientHandle; }
  /// Only outside a step. None runs `finish`.
  void ClientHandle(IWizardController* controller);
  /// Goes straight to a step, touching no page between. Only outside a step.
  void StepTo(const Designation& step);
  /// Loads the frame, goes to the first page (absent: page 1) and shows the frame. Once, and only with
  /// a page there. A first step that designates none leaves the frame loaded and invisible.
  void Start(const Designation& firstStep = {});
  /// Saves the settings and takes the pages down. Not during a step. Does not end the program.
  void finish();
  /// The walk: -1 back, +1 forward, 0 to `NextStep`; nothing for any other. Lost when a step is in
  /// progress. A failure in a callback or in the frame is dropped and the walk goes on; only a refusal
  /// stops it.
  void Step(std::int32_t direction);
  /// The frame has been laid out for its first page and is not being laid out right now.
  bool FinishedLoading() const { return mFinishedLoading; }
  /// Puts the buttons first in the tab order and the focus on the one pressed last.
  void TransferFocus();
  /// Acts on a released key; `keyCode` becomes 0 when it was handled. `shift` is 0 for none, 4 for Alt.
  void TranslateKey(std::int16_t& keyCode, std::int16_t shift);

  // Events of the frame's window.
  void cmdHelp_Click();
  void cmdStepBack_Click();
  void cmdStepFwd_Click();
  void cmdTerminate_Click();
  void picPage_GotFocus();
  /// The frame is asked to close; `cancel` comes back true when it stays open. A request that arrives
  /// while another one is being answered, or after one was let through, is refused without a question.
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

  void Form_Initialize();
  /// The step has been made: numbers, frame, buttons, and the controller told.
  void Arrive(std::int16_t target);
  void LayoutFrame();
  void UpdateFrame();
  void ShowLastStep();
  void DisableBack();
  bool ClickDefaultButton();
  /// Takes a page out of its row. The page may be on the call stack, so it lives on until the wizard goes.
  void Retire(StepRecord& row);

  /// Number of the first row with this key, or -1.
  std::int16_t FindKey(const std::string& key) const;
  /// Number of the step designated, or -1.
  std::int16_t ResolveStep(const Designation& value) const;
  /// One move from page to page; false when the page being left refused.
  bool SwitchPage(std::int16_t from, std::int16_t target);

  /// The row of a step, the page of a row, the controller: not there is a failure, raised.
  StepRecord& Row(std::int16_t step) { return mSteps.at(static_cast<std::size_t>(step - 1)); }
  IWizardPage& Page(std::int16_t step);
  IWizardController& Client();
  /// The page of a step, or none.
  IWizardPage* FindPage(std::int16_t step) const;

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
  bool mClosing = false;  ///< A request to close is being answered, or was let through.
  std::vector<std::unique_ptr<IWizardPage>> mRetired;
};

}  // namespace tarnwick
