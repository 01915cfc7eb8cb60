// The wizard and its controller on a frame that notes every call, and the arithmetic of the layout.
#include <gmock/gmock.h>

#include "platform/help.h"
#include "platform/program.h"
#include "platform/text.h"
#include "settings/modDebug.h"
#include "support/ClockDouble.h"
#include "support/FrameDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "wizard/FrameLayout.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {

using testing::Contains;
using testing::ElementsAre;

/// The program, started in a folder that is not its own. The test shows the help and, after `Open`, is
/// the wizard's controller; it notes either in the frame's log.
struct WizardTest : testing::Test, help::IHelpViewer, IWizardController {
  WizardTest() {
    ResetGlobals();
    WriteFile(startFolder / "debugexe.txt", "the run before");
    WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nCOMport = COM3\r\n");
    std::filesystem::current_path(startFolder.Path());
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    program::SetEnd([this] { frame.Note("End"); });
    help::Install(*this);
    user.log = [this](const std::string& line) { frame.Note(line); };
    RunMain();
  }
  ~WizardTest() override {
    program::SetEnd({});
    help::Uninstall();
  }
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

  void Show(const std::filesystem::path&, std::string_view topic) override { frame.Note(std::string(topic)); }
  void BeforeUILoad() override {}
  void BeforeStep(std::int32_t direction, bool& cancel) override {
    frame.Ask("BeforeStep " + std::to_string(direction), cancel);
  }
  void AfterStep() override { frame.Note("AfterStep"); }
  void OnRequestHelp() override { frame.Note("OnRequestHelp"); }
  void OnCancel(bool& cancel) override { frame.Ask("OnCancel", cancel); }
  CWizard& WizardHandle() override { return *wizard; }

  TempFolder folder, startFolder;
  ClockDouble clock;
  UserDouble user;
  FrameDouble frame;
  std::unique_ptr<CWizardController> controller;
  CWizard* wizard = nullptr;
};

TEST(FrameLayout, FitsRoundEachPageAndIsNeverNarrowerThanTheButtons) {
  // Page size; page area, right end and top of the line, left edges of the buttons and right edge of the
  // last, top and bottom of the row, inside of the frame.
  const std::pair<FrameSize, std::vector<std::int32_t>> cases[] = {
      {{299, 182}, {130, 2, 301, 184, 434, 236, 4, 181, 263, 353, 433, 244, 267, 439, 275}},
      {{40, 400}, {130, 2, 42, 402, 273, 410, 4, 20, 102, 192, 272, 418, 441, 278, 449}},
  };
  for (const auto& [page, expected] : cases) {
    const FrameLayout at = LayOut({120, 226}, {80, 23}, page);
    EXPECT_EQ((std::vector{at.picPage.left, at.picPage.top, at.picPage.width, at.picPage.height,
                           at.bevelRight, at.bevelTop, at.cmdHelp.left, at.cmdStepBack.left,
                           at.cmdStepFwd.left, at.cmdTerminate.left, at.cmdTerminate.Right(),
                           at.cmdTerminate.top, at.cmdTerminate.Bottom(), at.client.width, at.client.height}),
              expected);
  }
}

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

TEST_F(WizardTest, ARefusalLeavesEverythingAndKeepsTheTarget) {
  Open(2);
  frame.refusing = {"Two BeforePageHide 3", "BeforeStep -1"};
  frame.failing = {"BeforeStep -1"};  // A failure leaves the refusal as it was set.
  wizard->Step(1);
  wizard->Step(0);
  wizard->Step(-1);
  EXPECT_EQ(Numbers(), (std::array{1, 2, 1}));
  EXPECT_THAT(frame.calls, ElementsAre("BeforeStep 1", "Two BeforePageHide 3", "BeforeStep 0",
                                       "Two BeforePageHide 3", "BeforeStep -1"));
}

TEST_F(WizardTest, DuringAStepOnlyARedirectAndTheWayOutAct) {
  Open();
  frame.onCall = [&](const std::string& line) {
    if (line == "BeforeStep 1") wizard->NextStep(3.0);
    if (line != "One BeforePageHide 3") return;
    std::int16_t escape = 27;
    wizard->Step(1);
    wizard->CurrentStep("Two");
    wizard->ClientHandle(nullptr);
    wizard->finish();
    wizard->TransferFocus();
    wizard->TranslateKey(escape, 0);
    EXPECT_EQ(Numbers(), (std::array{1, 1, 3}));
    wizard->NextStep("Four");                       // Too late to change the page shown.
    for (int i = 0; i < 100; ++i) Add("More", {});  // The table may grow under the step.
  };
  wizard->Step(1);
  EXPECT_EQ(Numbers(), (std::array{1, 3, -1}));
  EXPECT_EQ(frame.Take().size(), 15U);
  wizard->CurrentStep("1");  // A page is loaded once.
  EXPECT_THAT(frame.Take(), testing::Not(Contains("Load One")));
  frame.onCall = [&](const std::string& line) {
    if (line == "One BeforePageHide 2") frame.RequestClose();
  };
  wizard->Step(1);
  EXPECT_THAT(frame.calls, testing::AllOf(Contains("End"), testing::Not(Contains("Unload One"))));
}

TEST_F(WizardTest, TheTableOfPages) {
  CWizard one(frame, {}), table(frame, {});
  wizard = &one;
  Add("x", {});
  wizard->Start();
  EXPECT_THAT(frame.Take(), testing::IsSupersetOf({"Next off", "Back off", "ShowFrame"}));
  wizard = &table;
  EXPECT_EQ(wizard->StepCount(), -1);
  wizard->Step(-1);
  EXPECT_EQ(Numbers(), (std::array{-1, 0, 1}));
  wizard->Start();
  Add("a", "Key");
  Add("b", "Key");  // Dropped.
  Add("c", "KEY");
  wizard->Start("Five");
  EXPECT_THAT(frame.Take(), ElementsAre("LoadFrame"));
  wizard->Start("KEY");
  EXPECT_THAT(frame.Take(), Contains("Show c"));
  Add("d", "2");
  Add("e", "2");  // A key that reads as a number is no duplicate, and is never found.
  Add("f", 6.0);  // A number is never found either.
  const std::pair<Designation, const char*> cases[] = {
      {"Key", "a"}, {"KEY", "c"}, {"key", ""}, {" Key", ""}, {" 2 ", "c"}, {2.5, "c"}, {3.5, "e"},
      {0.5, ""},    {5.0, "f"},   {6.0, ""},   {"6", ""},    {1e9, ""},    {"", ""},   {{}, ""}};
  for (const auto& [value, name] : cases) EXPECT_EQ(frame.names[wizard->PageHandle(value)], name);
  wizard->ClientHandle(nullptr);
  EXPECT_THAT(frame.calls, ElementsAre("Hide c", "Detach c", "Unload c"));
  EXPECT_TRUE(wizard->PageHandle("KEY") == nullptr && wizard->PageHandle("Key") != nullptr);
  wizard->Step(1);
}

TEST_F(WizardTest, ButtonsFollowTheStepAndTheFreezeAndWhatLeadsNowhereIsSilent) {
  Add("Five", "Five");
  // Step, caption of the terminate button before and after.
  using Case = std::tuple<int, const char*, const char*>;
  for (const auto& [step, before, after] :
       {Case{1, "Cancel", "Exit"}, Case{2, "cancel", "cancel"}, Case{4, "Exit", "Exit"},
        Case{5, "Cancel", "Finish"}, Case{3, "Finish", "Exit"}}) {
    frame.Caption(FrameButton::cmdTerminate, before);
    wizard->StepTo(static_cast<double>(step));
    EXPECT_EQ(frame.Caption(FrameButton::cmdTerminate), after) << "on " << step;
    frame.Take();
    wizard->Frozen(true);
    EXPECT_TRUE(wizard->Frozen());
    EXPECT_THAT(frame.Take(),
                ElementsAre("Help off", "Back off", "Next off", step == 4 ? "Terminate on" : "Terminate off",
                            "Page area off", "Wait pointer", "Pump"));
    wizard->Frozen(false);
    EXPECT_THAT(frame.Take(),
                ElementsAre("Help on", step == 1 ? "Back off" : "Back on", step == 5 ? "Next off" : "Next on",
                            "Terminate on", "Page area on", "Pointer", "Pump"));
    wizard->Start();
    wizard->NextStep("Two");
    for (const char* none : {"", "Six", "6"}) wizard->StepTo(none);
    for (const int by : {0, 2, -2, step == 1 ? -1 : step == 5 ? 1 : 0}) wizard->Step(by);
    wizard->cmdHelp_Click();
    EXPECT_EQ(frame.Take(), step == 5 ? Lines{} : Lines{"Step" + std::to_string(step) + ".htm"});
  }
}

TEST_F(WizardTest, KeysActOnWhatIsEnabled) {
  // Step, frozen, key, shift, a call that is made (none: no call), handled.
  using Case = std::tuple<int, bool, std::int16_t, std::int16_t, std::string, bool>;
  Open();
  frame.refusing = {"OnCancel"};
  for (const auto& [step, frozen, code, shift, call, handled] :
       {Case{2, false, 37, 4, "Layout One", false}, Case{2, false, 39, 4, "Layout Three", false},
        Case{2, true, 37, 4, "", false}, Case{2, true, 39, 4, "", false}, Case{2, false, 37, 0, "", false},
        Case{2, false, 13, 0, "Layout Three after Next", true}, Case{4, false, 13, 0, "OnCancel", true},
        Case{2, true, 13, 0, "", false}, Case{2, false, 13, 4, "", false}, Case{3, true, 27, 0, "", true},
        Case{1, false, 27, 0, "OnCancel", true}, Case{1, false, 27, 1, "", false}}) {
    wizard->StepTo(static_cast<double>(step));
    wizard->Frozen(frozen);
    frame.Take();
    std::int16_t key = code;
    wizard->TranslateKey(key, shift);
    EXPECT_EQ(key, handled ? 0 : code);
    EXPECT_THAT(frame.calls, testing::Conditional(call.empty(), testing::IsEmpty(), Contains(call))) << code;
  }
  EXPECT_EQ(user.beeps, 1);
}

TEST_F(WizardTest, FocusGoesToTheLastButtonAndToThePage) {
  Open();
  wizard->TransferFocus();
  EXPECT_THAT(frame.Take(), ElementsAre("Next at 0", "Terminate at 1", "Help at 2", "Back at 3",
                                        "Page area at 4", "Focus Next"));
  frame.failing = {"OnRequestHelp", "Focus One"};
  wizard->cmdHelp_Click();
  wizard->TransferFocus();
  wizard->picPage_GotFocus();
  EXPECT_THAT(frame.calls, testing::IsSupersetOf({"OnRequestHelp", "Focus Help", "Focus One"}));
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
