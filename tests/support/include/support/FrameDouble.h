// The wizard's frame as plain variables: every call recorded, any call made to fail.
#pragma once

#include <map>
#include <set>
#include <stdexcept>

#include "wizard/CWizard.h"

namespace tarnwick::test {

using Lines = std::vector<std::string>;

/// Calls are recorded as lines, and others may note theirs in the same log.
struct FrameDouble final : public IWizardFrame {
  /// Records a line, then fails if it is one of `failing`.
  void Note(const std::string& line) {
    calls.push_back(line);
    if (onCall) onCall(line);
    if (failing.contains(line)) throw std::runtime_error(line);
  }
  void Note(const std::string& what, int number) { Note(what + " " + std::to_string(number)); }
  /// Sets a property of a button and notes it.
  template <class Value>
  void Let(std::map<FrameButton, Value>& values, FrameButton button, Value value, const std::string& words) {
    values[button] = value;
    Note(Name(button) + words);
  }
  /// The log so far, which starts anew.
  Lines Take() { return std::exchange(calls, {}); }

  void Bind(CWizard& wizard) override { bound = &wizard; }
  void LoadFrame() override { Note("LoadFrame"); }
  void ShowFrame() override { Note("ShowFrame"); }
  void LoadPage(IWizardPage& page) override { Note("Load " + names[&page]); }
  WindowHandle AttachPage(IWizardPage& page) override {
    Note("Attach " + names[&page]);
    return &page;  // Any value of its own for each page.
  }
  void DetachPage(IWizardPage& page, WindowHandle parent) override {
    Note("Detach " + names[&page] + (parent == &page ? "" : " to a wrong parent"));
  }
  void UnloadPage(IWizardPage& page) override { Note("Unload " + names[&page]); }
  void SetPageVisible(IWizardPage& page, bool on) override { Note((on ? "Show " : "Hide ") + names[&page]); }
  void LayoutFrame(IWizardPage* page, bool centre, std::optional<FrameButton> last) override {
    Note("Layout " + names[page] + (centre ? "" : " in place") + (last ? " after " + Name(*last) : ""));
  }
  bool Enabled(FrameButton of) const override { return !off[of]; }
  void Enabled(FrameButton of, bool on) override { Let(off, of, !on, on ? " on" : " off"); }
  std::string Caption(FrameButton of) const override { return captions[of]; }
  void Caption(FrameButton of, const std::string& text) override { Let(captions, of, text, " says " + text); }
  bool Default(FrameButton of) const override { return defaults[of]; }
  void Default(FrameButton of, bool on) override { Let(defaults, of, on, on ? " default" : " not default"); }
  void TabPosition(FrameButton button, int at) override { Note(Name(button) + " at", at); }
  void FocusButton(FrameButton button) override { Note("Focus " + Name(button)); }
  void PageAreaEnabled(bool on) override { Note(on ? "Page area on" : "Page area off"); }
  void PageAreaTabPosition(int at) override { Note("Page area at", at); }
  void FocusPageArea() override { Note("Focus page area"); }
  void FocusPage(IWizardPage& page) override { Note("Focus " + names[&page]); }
  void FrameCaption(const std::string& caption) override { Note(caption); }
  void SetWaitPointer(bool on) override { Note(on ? "Wait pointer" : "Pointer"); }
  void PumpEvents() override { Note("Pump"); }
  /// Closes as a window does: asked first, and let go when nothing is against it.
  void RequestClose() override {
    Note("Close");
    bool cancel = false;
    bound->Form_QueryUnload(cancel);
    if (!cancel) bound->Form_Unload();
  }
  void ShowShutdown() override { Note("Shutdown"); }

  static constexpr const char* kNames[] = {"Help", "Back", "Next", "Terminate"};
  static std::string Name(FrameButton button) { return kNames[static_cast<std::size_t>(button)]; }

  Lines calls;
  std::set<std::string> failing;                   ///< Lines whose calls fail.
  std::function<void(const std::string&)> onCall;  ///< Told each line.
  std::map<const IWizardPage*, std::string> names;
  mutable std::map<FrameButton, bool> off, defaults;
  mutable std::map<FrameButton, std::string> captions;
  CWizard* bound = nullptr;
};

/// A page that notes its callbacks in the frame's log under its name.
struct PageDouble final : public IWizardPage {
  PageDouble(FrameDouble& in, const std::string& as) : frame(in), name(in.names[this] = as) {}
  void BeforePageShow(CWizard&, std::int16_t from) override { frame.Note(name + " BeforePageShow", from); }
  void BeforePageHide(CWizard&, std::int16_t next, bool&) override {
    frame.Note(name + " BeforePageHide", next);
  }
  FrameDouble& frame;
  const std::string name;
};

}  // namespace tarnwick::test
