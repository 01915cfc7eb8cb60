// The wizard's frame as plain variables: every call recorded, any call made to fail.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "wizard/CWizard.h"

namespace tarnwick::test {

/// Calls are recorded as lines ("Enabled cmdHelp off"), and others may note theirs in the same log.
class FrameDouble final : public IWizardFrame {
 public:
  struct ButtonState {
    bool enabled = true;
    std::string caption;
    bool isDefault = false;
    int tabPosition = 0;
  };

  /// Records a line, then fails if it is one of `failing`.
  void Note(const std::string& line) {
    calls.push_back(line);
    if (onCall) onCall(line);
    if (failing.contains(line)) throw std::runtime_error(line);
  }
  /// The log so far, which starts anew.
  std::vector<std::string> Take() { return std::exchange(calls, {}); }

  void Bind(CWizard& wizard) override { mWizard = &wizard; }
  void LoadFrame() override { Note("LoadFrame"); }
  void ShowFrame() override { Note("ShowFrame"); }
  void LoadPage(IWizardPage& page) override { Note("LoadPage " + names[&page]); }
  WindowHandle AttachPage(IWizardPage& page) override {
    Note("AttachPage " + names[&page]);
    return &page;  // Any value of its own for each page.
  }
  void DetachPage(IWizardPage& page, WindowHandle oldParent) override {
    Note("DetachPage " + names[&page] + (oldParent == &page ? "" : " to a wrong parent"));
  }
  void UnloadPage(IWizardPage& page) override { Note("UnloadPage " + names[&page]); }
  void SetPageVisible(IWizardPage& page, bool visible) override {
    Note("SetPageVisible " + names[&page] + OnOff(visible));
  }
  void LayoutFrame(IWizardPage* page, bool centre, std::optional<FrameButton> lastButton) override {
    Note("LayoutFrame " + (page == nullptr ? std::string("none") : names[page]) + (centre ? " centre" : "") +
         (lastButton ? " " + Name(*lastButton) : ""));
  }

  bool Enabled(FrameButton button) const override { return At(button).enabled; }
  void Enabled(FrameButton button, bool enabled) override {
    At(button).enabled = enabled;
    Note("Enabled " + Name(button) + OnOff(enabled));
  }
  std::string Caption(FrameButton button) const override { return At(button).caption; }
  void Caption(FrameButton button, const std::string& caption) override {
    At(button).caption = caption;
    Note("Caption " + Name(button) + " " + caption);
  }
  bool Default(FrameButton button) const override { return At(button).isDefault; }
  void Default(FrameButton button, bool isDefault) override {
    At(button).isDefault = isDefault;
    Note("Default " + Name(button) + OnOff(isDefault));
  }
  void TabPosition(FrameButton button, int position) override {
    At(button).tabPosition = position;
    Note("TabPosition " + Name(button) + " " + std::to_string(position));
  }
  void FocusButton(FrameButton button) override { Note("FocusButton " + Name(button)); }

  void PageAreaEnabled(bool enabled) override { Note("PageAreaEnabled" + OnOff(enabled)); }
  void PageAreaTabPosition(int position) override { Note("PageAreaTabPosition " + std::to_string(position)); }
  void FocusPageArea() override { Note("FocusPageArea"); }
  void FocusPage(IWizardPage& page) override { Note("FocusPage " + names[&page]); }

  void FrameCaption(const std::string& caption) override { Note("FrameCaption " + caption); }
  void SetWaitPointer(bool on) override { Note("SetWaitPointer" + OnOff(on)); }
  void PumpEvents() override { Note("PumpEvents"); }
  /// Closes as a window does: asked first, and let go when nothing is against it.
  void RequestClose() override {
    Note("RequestClose");
    bool cancel = false;
    mWizard->Form_QueryUnload(cancel);
    if (!cancel) mWizard->Form_Unload();
  }
  void ShowShutdown() override { Note("ShowShutdown"); }

  static std::string Name(FrameButton button) {
    constexpr std::array kNames{"cmdHelp", "cmdStepBack", "cmdStepFwd", "cmdTerminate"};
    return kNames[static_cast<std::size_t>(button)];
  }

  std::vector<std::string> calls;
  std::set<std::string> failing;                   ///< Lines whose calls fail.
  std::function<void(const std::string&)> onCall;  ///< Told each line.
  std::map<const IWizardPage*, std::string> names;

 private:
  static std::string OnOff(bool on) { return on ? " on" : " off"; }
  const ButtonState& At(FrameButton button) const { return mButtons[static_cast<std::size_t>(button)]; }
  ButtonState& At(FrameButton button) { return mButtons[static_cast<std::size_t>(button)]; }

  CWizard* mWizard = nullptr;
  std::array<ButtonState, 4> mButtons{
      {{.caption = "Help"}, {.caption = "<  Back"}, {.caption = "Next  >"}, {.caption = "Exit"}}};
};

/// A page that notes its callbacks in the frame's log under its name.
class PageDouble final : public IWizardPage {
 public:
  PageDouble(FrameDouble& frame, const std::string& name) : mFrame(frame), mName(name) {
    frame.names[this] = name;
  }
  void BeforePageShow(CWizard&, std::int16_t currentStep) override {
    mFrame.Note(mName + " BeforePageShow " + std::to_string(currentStep));
  }
  void BeforePageHide(CWizard&, std::int16_t nextStep, bool& cancel) override {
    cancel = refuses;
    mFrame.Note(mName + " BeforePageHide " + std::to_string(nextStep));
  }

  bool refuses = false;

 private:
  FrameDouble& mFrame;
  std::string mName;
};

}  // namespace tarnwick::test
