// The wizard and its controller on a frame that notes every call.
#include <gmock/gmock.h>

#include "platform/program.h"
#include "platform/text.h"
#include "settings/modDebug.h"
#include "support/ClockDouble.h"
#include "support/FrameDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// The program, started in a folder that is not its own. After `Open` the test is the wizard's controller.
struct WizardTest : testing::Test, IWizardController {
  WizardTest() {
    ResetGlobals();
    WriteFile(startFolder / "debugexe.txt", "the run before");
    WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nCOMport = COM3\r\n");
    std::filesystem::current_path(startFolder.Path());
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    program::SetEnd([this] { frame.Note("End"); });
    user.log = [this](const std::string& line) { frame.Note(line); };
    RunMain();
  }
  ~WizardTest() override { program::SetEnd({}); }
  void RunMain() {
    gController = nullptr;
    controller = Main(frame, {Factory("One"), Factory("Two"), Factory("Three"), Factory("Four")});
    wizard = &controller->WizardHandle();
  }
  PageFactory Factory(const std::string& name) {
    return [this, name] {
      EXPECT_TRUE(gController == nullptr && gComPort == "COM3");
      return std::make_unique<PageDouble>(frame, name);
    };
  }
  /// The program anew, on page `step`, with the test for a controller. The log is empty.
  void Open(double step = 1) {
    RunMain();
    wizard->ClientHandle(this);
    wizard->StepTo(step);
    frame.Take();
  }
  void Add(const std::string& name, const Designation& key) {
    wizard->AddPage(std::make_unique<PageDouble>(frame, name), key);
  }
  /// The step left last, the step on view, the target.
  std::array<int, 3> Numbers() { return {wizard->LastStep(), wizard->CurrentStep(), wizard->NextStep()}; }

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
  std::unique_ptr<CWizardController> controller;
  CWizard* wizard = nullptr;
};

TEST_F(WizardTest, TheWholeStartIsOneOrder) {
  EXPECT_THAT(frame.calls, ElementsAre("Tarnwick  v2.2.4", "LoadFrame", "Load One", "Attach One",
                                       "One BeforePageShow 0", "Show One", "Layout One", "Back on", "Next on",
                                       "Next default", "Terminate not default", "Page area at 5",
                                       "Focus page area", "Back off", "ShowFrame"));
  EXPECT_TRUE(gController == controller.get() && wizard->ClientHandle() == gController);
  EXPECT_EQ(ReadFile(startFolder / "debugexe.txt"), "");  // Opened before the settings changed folders.
}

TEST_F(WizardTest, AStepIsOneOrderAndAFailureIsDroppedWhereItHappens) {
  const auto whole = text::Split(
      "BeforeStep 1,Three BeforePageHide 4,Hide Three,Load Four,Attach Four,Four BeforePageShow 3,Show Four,"
      "Layout Four,Back on,Next on,Next default,Terminate default,Page area at 5,Focus page area,"
      "Next off,Terminate says Finish,Terminate default,AfterStep",
      ',');
  const auto switchBegin = whole.begin() + 1, switchEnd = whole.begin() + 7;
  frame.onCall = [&](const std::string& line) {
    EXPECT_FALSE(line == "Layout Four" && wizard->FinishedLoading());
  };
  for (auto failed = whole.begin(); failed != whole.end(); ++failed) {
    Open(3);
    frame.failing = {std::string(*failed)};
    wizard->Step(1);
    // In the switch of pages a failure skips the rest of the switch and no more.
    const bool skips = failed >= switchBegin && failed < switchEnd;
    Lines expected(whole.begin(), failed + 1);
    expected.insert(expected.end(), skips ? switchEnd : failed + 1, whole.end());
    EXPECT_EQ(frame.Take(), expected);
    EXPECT_EQ(Numbers(), (std::array{3, 4, -1})) << *failed;
    wizard->Step(-1);
    EXPECT_EQ(wizard->CurrentStep(), 3) << *failed << " left the step under way";
  }
}

TEST_F(WizardTest, DuringAStepOnlyARedirectActs) {
  Open();
  frame.onCall = [&](const std::string& line) {
    if (line == "BeforeStep 1") wizard->NextStep(3.0);
    if (line != "One BeforePageHide 3") return;
    wizard->Step(1);
    wizard->ClientHandle(nullptr);
    wizard->NextStep("Four");                       // Too late to change the page shown.
    for (int i = 0; i < 100; ++i) Add("More", {});  // The table may grow under the step.
  };
  wizard->Step(1);
  EXPECT_EQ(Numbers(), (std::array{1, 3, -1}));
  EXPECT_EQ(frame.Take().size(), 15U);
  wizard->CurrentStep("1");
  EXPECT_THAT(frame.calls, Not(Contains("Load One"))) << "A page is loaded once.";
}

TEST_F(WizardTest, FindsAPageByItsNumberOrItsExactKey) {
  Add("Copy", "Two");  // Dropped.
  Add("Five", "2");    // A key that reads as a number is no duplicate, and is never found.
  const std::pair<Designation, const char*> cases[] = {
      {"Two", "Two"}, {"two", ""},  {" 2 ", "Two"}, {2.5, "Two"}, {3.5, "Four"}, {0.5, ""},
      {5.0, "Five"},  {"Five", ""}, {6.0, ""},      {1e9, ""},    {"", ""},      {{}, ""}};
  for (const auto& [value, name] : cases) EXPECT_EQ(frame.names[wizard->PageHandle(value)], name);
}

TEST_F(WizardTest, ButtonsFollowTheStepAndTheFreezeAndWhatLeadsNowhereIsSilent) {
  // Step, caption of the terminate button before and after.
  using Case = std::tuple<int, const char*, const char*>;
  for (const auto& [step, before, after] : {Case{1, "Cancel", "Exit"}, Case{2, "cancel", "cancel"},
                                            Case{4, "Exit", "Finish"}, Case{3, "Finish", "Exit"}}) {
    frame.Caption(FrameButton::cmdTerminate, before);
    wizard->StepTo(static_cast<double>(step));
    EXPECT_EQ(frame.Caption(FrameButton::cmdTerminate), after) << "on " << step;
    frame.Take();
    wizard->Frozen(true);
    EXPECT_THAT(frame.Take(),
                ElementsAre("Help off", "Back off", "Next off", step == 4 ? "Terminate on" : "Terminate off",
                            "Page area off", "Wait pointer", "Pump"));
    wizard->Frozen(false);
    EXPECT_THAT(frame.Take(),
                ElementsAre("Help on", step == 1 ? "Back off" : "Back on", step == 4 ? "Next off" : "Next on",
                            "Terminate on", "Page area on", "Pointer", "Pump"));
    wizard->StepTo("Six");
    for (const int by : {0, 2, -2, step == 1 ? -1 : step == 4 ? 1 : 0}) wizard->Step(by);
    EXPECT_THAT(frame.Take(), testing::IsEmpty());
  }
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
  const Box exit{"Are you sure you want to Exit the program?", ui::Buttons::YesNo, ui::Icon::Question};
  EXPECT_THAT(user.boxes, ElementsAre(exit, exit));
  EXPECT_EQ(clock.sleeps, std::vector(20, std::chrono::milliseconds(50)));
}

}  // namespace tarnwick::test
