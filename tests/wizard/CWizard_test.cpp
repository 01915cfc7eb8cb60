// The wizard and its controller on a frame that notes every call.
#include <gmock/gmock.h>

#include <map>
#include <set>
#include <stdexcept>

#include "app/ProgramSettings.h"
#include "platform/modDebug.h"
#include "platform/program.h"
#include "platform/text.h"
#include "support/ClockDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {

using testing::ElementsAre;

using Lines = std::vector<std::string>;

/// A wizard's frame of which every call is recorded as a line, and any made to fail. Others may note theirs
/// in the same log.
struct FrameDouble final : public IWizardFrame {
  /// Records a line, then fails if it is one of `failing`.
  void Note(const std::string& line) {
    calls.push_back(line);
    if (onCall) onCall(line);
    if (failing.contains(line)) throw std::runtime_error(line);
  }
  void Note(const std::string& what, int number) { Note(what + " " + std::to_string(number)); }
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
  bool Enabled(FrameButton) const override { return true; }
  void Enabled(FrameButton button, bool on) override { Note(Name(button) + (on ? " on" : " off")); }
  std::string Caption(FrameButton) const override { return "Finish"; }
  void Caption(FrameButton button, const std::string& text) override { Note(Name(button) + " says " + text); }
  bool Default(FrameButton) const override { return false; }
  void Default(FrameButton button, bool on) override {
    Note(Name(button) + (on ? " default" : " not default"));
  }
  void TabPosition(FrameButton button, int at) override { Note(Name(button) + " at", at); }
  void FocusButton(FrameButton button) override { Note("Focus " + Name(button)); }
  void BeforeLock() override { Note("Before lock"); }
  void BeforeUnlock() override { Note("Before unlock"); }
  void AfterStep() override {}
  void ShowLock() override { Note("Show lock"); }
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

/// The program, started in a folder that is not its own. The test can be the wizard's controller.
struct WizardTest : testing::Test, IWizardController {
  WizardTest() {
    ResetGlobals();
    WriteFile(startFolder / "debugexe.txt", "the run before");
    WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nCOMport = COM3\r\n");
    std::filesystem::current_path(startFolder.Path());
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    user.log = [this](const std::string& line) { frame.Note(line); };
    RunMain();
  }
  void RunMain() {
    gController = nullptr;
    controller = Main(frame, {LoadSettings, SaveSettings},
                      {Factory("One"), Factory("Two"), Factory("Three"), Factory("Four")});
    wizard = &controller->WizardHandle();
  }
  PageFactory Factory(const std::string& name) {
    return [this, name] {
      EXPECT_TRUE(gController == nullptr && gComPort == "COM3");
      return std::make_unique<PageDouble>(frame, name);
    };
  }

  void BeforeUILoad() override {}
  void BeforeStep(std::int32_t direction, bool&) override { frame.Note("BeforeStep", direction); }
  void AfterStep() override { frame.Note("AfterStep"); }
  void OnRequestHelp() override {}
  void OnCancel(bool&) override {}
  CWizard& WizardHandle() override { return *wizard; }

  TempFolder folder, startFolder;
  ClockDouble clock;
  UserDouble user;
  FrameDouble frame;
  const InPlace<program::Ending> ending{program::Ending{[this] { frame.Note("End"); }}};
  std::unique_ptr<CWizardController> controller;
  CWizard* wizard = nullptr;
};

TEST_F(WizardTest, TheWholeStartIsOneOrder) {
  EXPECT_THAT(frame.calls, ElementsAre("Tarnwick  v2.2.4", "LoadFrame", "Load One", "Attach One",
                                       "One BeforePageShow 0", "Show One", "Layout One", "Back on", "Next on",
                                       "Next default", "Terminate says Exit", "Terminate not default",
                                       "Page area at 5", "Focus page area", "Back off", "ShowFrame"));
  EXPECT_TRUE(gController == controller.get() && wizard->ClientHandle() == gController);
  EXPECT_EQ(ReadFile(startFolder / "debugexe.txt"), "");  // Opened before the settings changed folders.
}

TEST_F(WizardTest, AStepIsOneOrderAndAFailureIsDroppedWhereItHappens) {
  const auto whole = text::Split(
      "BeforeStep 1,Three BeforePageHide 4,Hide Three,Load Four,Attach Four,Four BeforePageShow 3,Show Four,"
      "Layout Four,Back on,Next on,Next default,Terminate says Exit,Terminate default,Page area at 5,"
      "Focus page area,Next off,Terminate says Finish,Terminate default,AfterStep",
      ',');
  const auto switchBegin = whole.begin() + 1, switchEnd = whole.begin() + 7;
  frame.onCall = [&](const std::string& line) {
    EXPECT_FALSE(line == "Layout Four" && wizard->FinishedLoading());
  };
  for (auto failed = whole.begin(); failed != whole.end(); ++failed) {
    RunMain();
    wizard->ClientHandle(this);
    wizard->StepTo(3.0);
    frame.Take();
    frame.failing = {std::string(*failed)};
    wizard->Step(1);
    // In the switch of pages a failure skips the rest of the switch and no more.
    const bool skips = failed >= switchBegin && failed < switchEnd;
    Lines expected(whole.begin(), failed + 1);
    expected.insert(expected.end(), skips ? switchEnd : failed + 1, whole.end());
    EXPECT_EQ(frame.Take(), expected);
    EXPECT_EQ((std::array{wizard->LastStep(), wizard->CurrentStep(), wizard->NextStep()}),
              (std::array<std::int16_t, 3>{3, 4, -1}));
    wizard->Step(-1);
    EXPECT_EQ(wizard->CurrentStep(), 3) << *failed << " left the step under way";
  }
}

TEST_F(WizardTest, PagesAreFoundByPlaceOrKeyAndAStepCanBeLedElsewhere) {
  for (const auto& [name, key] : {std::pair{"a", "Key"}, {"b", "Key"}, {"c", "KEY"}, {"d", "2"}})
    wizard->AddPage(std::make_unique<PageDouble>(frame, name), key);
  // "b" is dropped. A key that reads as a number is never found: the number is a place.
  const std::pair<Designation, const char*> cases[] = {
      {"Key", "a"}, {"KEY", "c"}, {"key", ""}, {" 2 ", "Two"}, {2.5, "Two"}, {5.5, "c"},
      {0.5, ""},    {8.0, ""},    {1e9, ""},   {"", ""},       {{}, ""}};
  for (const auto& [value, name] : cases) EXPECT_EQ(frame.names[wizard->PageHandle(value)], name);
  wizard->ClientHandle(this);
  frame.onCall = [&](const std::string& line) {
    if (line == "BeforeStep 1") wizard->NextStep("Key");
  };
  wizard->Step(1);
  EXPECT_EQ(wizard->CurrentStep(), 5);
  wizard->CurrentStep("KEY");
  EXPECT_EQ(wizard->CurrentStep(), 6);
  frame.Take();
  wizard->TransferFocus();
  EXPECT_THAT(frame.calls, ElementsAre("Next at 0", "Terminate at 1", "Help at 2", "Back at 3",
                                       "Page area at 4", "Focus Next"));
}

TEST_F(WizardTest, TheWayOutIsOneOrder) {
  wizard->Step(1);
  user.answers = {ui::Answer::No};
  frame.RequestClose();
  EXPECT_NE(gDebugFile, nullptr);
  frame.Take();
  frame.failing = {"Detach One", "Shutdown"};
  frame.onCall = [&](const std::string& line) {
    // A second way out, tried while the first is under way, asks nothing and changes nothing.
    if (line == "box" || line == "Pump") frame.RequestClose();
    EXPECT_TRUE(line != "Hide Two" || (gDebugFile == nullptr && gQAL == nullptr));
  };
  wizard->cmdTerminate_Click();
  EXPECT_EQ(std::erase(frame.calls, "Pump"), 20U);
  EXPECT_EQ(std::erase(frame.calls, "Close"), 22U);
  EXPECT_THAT(frame.calls, ElementsAre("box", "Hide Two", "Detach One", "Unload One", "Detach Two",
                                       "Unload Two", "Shutdown", "End"));
  const std::string exit = "YesNo ?|Are you sure you want to Exit the program?";
  EXPECT_THAT(user.boxes, ElementsAre(exit, exit));
  EXPECT_EQ(clock.sleeps, std::vector(20, std::chrono::milliseconds(50)));
}

}  // namespace tarnwick::test
