// The table of pages and the walk from page to page.
#include <stdexcept>
#include <utility>

#include "platform/contain.h"
#include "platform/text.h"
#include "wizard/CWizard.h"

namespace tarnwick {
namespace {

/// The number that a designation is or reads as, or none.
std::optional<double> NumberIn(const Designation& value) {
  if (const double* number = std::get_if<double>(&value)) return *number;
  const std::string* text = std::get_if<std::string>(&value);
  if (text != nullptr && text::IsNumeric(*text)) return text::NumericPrefix(*text);
  return std::nullopt;
}

/// The key that a designation is, or none: text that is not empty and reads as no number.
const std::string* KeyIn(const Designation& value) {
  const std::string* text = std::get_if<std::string>(&value);
  return text == nullptr || text->empty() || text::IsNumeric(*text) ? nullptr : text;
}

}  // namespace

void CWizard::AddPage(std::unique_ptr<IWizardPage> page, const Designation& key) {
  const std::string* name = KeyIn(key);
  if (name != nullptr && FindKey(*name) != -1) return;
  Contain([&] {
    mSteps.push_back({key, std::move(page)});
    mStepCount = static_cast<std::int16_t>(mSteps.size());
  });
}

std::int16_t CWizard::FindKey(const std::string& key) const {
  for (std::size_t row = 0; row < mSteps.size(); ++row) {
    const std::string* held = std::get_if<std::string>(&mSteps[row].Key);
    if (held != nullptr && *held == key) return static_cast<std::int16_t>(row + 1);
  }
  return -1;
}

std::int16_t CWizard::ResolveStep(const Designation& value) const {
  if (const std::optional<double> number = NumberIn(value)) {
    const std::int16_t step = text::ToInt16(*number);
    return step >= 1 && step <= mStepCount ? step : std::int16_t{-1};
  }
  const std::string* key = KeyIn(value);
  return key == nullptr ? std::int16_t{-1} : FindKey(*key);
}

IWizardPage* CWizard::FindPage(std::int16_t step) const {
  if (step < 1 || static_cast<std::size_t>(step) > mSteps.size()) return nullptr;
  return mSteps[static_cast<std::size_t>(step - 1)].Page.get();
}

IWizardPage& CWizard::Page(std::int16_t step) {
  if (IWizardPage* page = FindPage(step)) return *page;
  throw std::out_of_range("no such page");
}

IWizardController& CWizard::Client() {
  if (mClientHandle == nullptr) throw std::logic_error("no controller");
  return *mClientHandle;
}

IWizardPage* CWizard::PageHandle(const Designation& index) {
  return FindPage(ResolveStep(index));
}

void CWizard::NextStep(const Designation& step) {
  if (!mStepping) return;
  const std::int16_t target = ResolveStep(step);
  if (target != -1) mNextStep = target;
}

void CWizard::CurrentStep(const Designation& step) {
  StepTo(step);
}

void CWizard::StepTo(const Designation& step) {
  if (mStepping) return;
  const std::int16_t target = ResolveStep(step);
  if (target == -1) return;
  mNextStep = target;
  Step(0);
}

void CWizard::Step(std::int32_t direction) {
  if (mStepping || direction < -1 || direction > 1) return;
  if (mCurrentStep < 1) {
    if (direction != 0) mNextStep = 1;
    mCurrentStep = 0;
  }
  const std::int32_t asked = direction == 0 ? mNextStep : mCurrentStep + direction;
  if (asked > mStepCount || asked < 1) return;

  mStepping = true;
  mNextStep = static_cast<std::int16_t>(asked);
  bool cancel = false;
  Contain([&] { Client().BeforeStep(direction, cancel); });
  if (!cancel) {
    // Read again: the controller may have redirected the step.
    const std::int16_t target = mNextStep;
    bool switched = true;  // A failure counts as success; only a refusal stops the step.
    Contain([&] { switched = SwitchPage(mCurrentStep, target); });
    if (switched) Arrive(target);
  }
  mStepping = false;
  Contain([&] { mFrame.AfterStep(); });
}

bool CWizard::SwitchPage(std::int16_t from, std::int16_t target) {
  if (from >= 1) {
    IWizardPage& leaving = Page(from);
    bool cancel = false;
    leaving.BeforePageHide(*this, target, cancel);
    if (cancel) return false;
    mFrame.SetPageVisible(leaving, false);
  }
  // Rows are looked up anew after each call out, since a page may add pages.
  IWizardPage& arriving = Page(target);
  if (!Row(target).Loaded) {
    mFrame.LoadPage(arriving);
    const WindowHandle oldParent = mFrame.AttachPage(arriving);
    Row(target).OldParent = oldParent;
    Row(target).Loaded = true;
  }
  arriving.BeforePageShow(*this, from);
  mFrame.SetPageVisible(arriving, true);
  return true;
}

void CWizard::Arrive(std::int16_t target) {
  mLastStep = std::exchange(mCurrentStep, target);
  mNextStep = -1;
  UpdateFrame();
  if (mCurrentStep == mStepCount) ShowLastStep();
  if (mCurrentStep == 1) DisableBack();
  Contain([&] { Client().AfterStep(); });
}

void CWizard::UpdateFrame() {
  LayoutFrame();
  Contain([&] { mFrame.Enabled(FrameButton::cmdStepBack, true); });
  Contain([&] { mFrame.Enabled(FrameButton::cmdStepFwd, true); });
  Contain([&] { mFrame.Default(FrameButton::cmdStepFwd, true); });
  Contain([&] {
    const std::string caption = mFrame.Caption(FrameButton::cmdTerminate);
    if (caption == "Finish" || caption == "Cancel") mFrame.Caption(FrameButton::cmdTerminate, "Exit");
  });
  Contain([&] { mFrame.Default(FrameButton::cmdTerminate, mCurrentStep == mStepCount); });
  Contain([&] { mFrame.PageAreaTabPosition(5); });
  Contain([&] { mFrame.FocusPageArea(); });
}

void CWizard::ShowLastStep() {
  Contain([&] { mFrame.Enabled(FrameButton::cmdStepFwd, false); });
  Contain([&] { mFrame.Caption(FrameButton::cmdTerminate, "Finish"); });
  Contain([&] { mFrame.Default(FrameButton::cmdTerminate, true); });
}

void CWizard::DisableBack() {
  Contain([&] { mFrame.Enabled(FrameButton::cmdStepBack, false); });
}

}  // namespace tarnwick
