// A wizard on a frame double, with a controller that notes its calls in the frame's log.
#pragma once

#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "platform/program.h"
#include "support/ClockDouble.h"
#include "support/FrameDouble.h"
#include "support/UserDouble.h"
#include "wizard/CWizard.h"

namespace tarnwick::test {

using Lines = std::vector<std::string>;

class ControllerDouble final : public IWizardController {
 public:
  explicit ControllerDouble(FrameDouble& frame) : mFrame(frame) {}
  void BeforeUILoad() override { mFrame.Note("BeforeUILoad"); }
  void BeforeStep(std::int32_t direction, bool& cancel) override {
    cancel = refusesStep;
    mFrame.Note("BeforeStep " + std::to_string(direction));
  }
  void AfterStep() override { mFrame.Note("AfterStep"); }
  void OnRequestHelp() override { mFrame.Note("OnRequestHelp"); }
  void OnCancel(bool& cancel) override {
    cancel = refusesClose;
    mFrame.Note("OnCancel");
  }
  CWizard& WizardHandle() override { throw std::logic_error("not asked for"); }

  bool refusesStep = false;
  bool refusesClose = false;

 private:
  FrameDouble& mFrame;
};

class WizardTest : public testing::Test {
 protected:
  WizardTest() {
    program::Set({"/nowhere", "Tarnwick", 2, 2, 4});
    program::SetEnd([this] { frame.Note("End"); });
    wizard = std::make_unique<CWizard>(
        frame, WizardHooks{[this] { frame.Note("LoadSettings"); }, [this] { frame.Note("SaveSettings"); }});
    wizard->ClientHandle(&controller);
  }
  ~WizardTest() override { program::SetEnd({}); }

  PageDouble& Add(const std::string& name, const Designation& key) {
    auto page = std::make_unique<PageDouble>(frame, name);
    PageDouble& made = *page;
    wizard->AddPage(std::move(page), key);
    return made;
  }
  void AddFour() {
    for (const char* name : {"One", "Two", "Three", "Four"}) pages.push_back(&Add(name, name));
  }
  /// Four pages, on view: `step`. The log is empty.
  void Open(std::int32_t step = 1) {
    AddFour();
    wizard->Start(static_cast<double>(step));
    frame.Take();
  }
  std::array<int, 3> Numbers() const {
    return {wizard->LastStep(), wizard->CurrentStep(), wizard->NextStep()};
  }
  /// Which of Help, Back, Next and terminate can be pressed: "HBNT" when all can.
  std::string Live() const {
    std::string live;
    for (const FrameButton button : {FrameButton::cmdHelp, FrameButton::cmdStepBack, FrameButton::cmdStepFwd,
                                     FrameButton::cmdTerminate}) {
      live += frame.Enabled(button) ? "HBNT"[static_cast<std::size_t>(button)] : '-';
    }
    return live;
  }
  std::string Terminate() const { return frame.Caption(FrameButton::cmdTerminate); }

  UserDouble user;
  ClockDouble clock;
  FrameDouble frame;
  ControllerDouble controller{frame};
  std::unique_ptr<CWizard> wizard;
  std::vector<PageDouble*> pages;
};

}  // namespace tarnwick::test
