// Start, freeze, keys, focus and the way out.
#include "WizardFixture.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(WizardTest, StartBringsTheFrameUpWithItsFirstPageInPlace) {
  EXPECT_EQ(Numbers(), (std::array{-1, -1, -1}));
  EXPECT_EQ(wizard->StepCount(), -1);
  wizard->Start();  // Without a page nothing happens.
  wizard->Step(-1);
  EXPECT_EQ(Numbers(), (std::array{-1, 0, 1}));
  AddFour();
  wizard->Start();
  EXPECT_THAT(frame.Take(),
              ElementsAre("FrameCaption Tarnwick  v2.2.4", "LoadSettings", "LoadFrame", "BeforeStep 1",
                          "LoadPage One", "AttachPage One", "One BeforePageShow 0", "SetPageVisible One on",
                          "LayoutFrame One centre", "Enabled cmdStepBack on", "Enabled cmdStepFwd on",
                          "Default cmdStepFwd on", "Default cmdTerminate off", "PageAreaTabPosition 5",
                          "FocusPageArea", "Enabled cmdStepBack off", "AfterStep", "ShowFrame"));
  EXPECT_EQ(Numbers(), (std::array{0, 1, -1}));
  EXPECT_TRUE(wizard->FinishedLoading());
  wizard->Start();
  EXPECT_THAT(frame.Take(), IsEmpty());
}

TEST_F(WizardTest, StartAtAGivenPage) {
  AddFour();
  frame.Take();
  wizard->Start("Five");
  EXPECT_THAT(frame.Take(), ElementsAre("LoadFrame"));
  EXPECT_FALSE(wizard->FinishedLoading());
  wizard->Start("3");
  EXPECT_EQ(Numbers(), (std::array{0, 3, -1}));
  EXPECT_EQ(frame.calls.back(), "ShowFrame");
}

TEST_F(WizardTest, AOnePageWizardIsFirstAndLastAtOnce) {
  Add("Only", "Only");
  wizard->Start();
  EXPECT_EQ(Live(), "H--T");
  EXPECT_EQ(Terminate(), "Finish");
  EXPECT_TRUE(frame.Default(FrameButton::cmdTerminate));
}

TEST_F(WizardTest, FrozenLocksTheUserOutByStep) {
  Open();
  const std::pair<const char*, const char*> states[] = {
      {"----", "H-NT"}, {"----", "HBNT"}, {"----", "HBNT"}, {"---T", "HB-T"}};
  for (int step = 1; step <= 4; ++step) {
    SCOPED_TRACE(step);
    wizard->StepTo(static_cast<double>(step));
    wizard->Frozen(true);
    wizard->Frozen(true);  // Does not nest.
    EXPECT_TRUE(wizard->Frozen());
    EXPECT_EQ(Live(), states[step - 1].first);
    frame.Take();
    wizard->Frozen(false);
    EXPECT_EQ(Live(), states[step - 1].second);
    const Lines calls = frame.Take();
    EXPECT_THAT(Lines(calls.begin() + 4, calls.end()),
                ElementsAre("PageAreaEnabled on", "SetWaitPointer off", "PumpEvents"));
  }
}

TEST_F(WizardTest, LetGoTheFrameIsTakenDownInOrderAndTheProgramEnds) {
  Open();
  wizard->Step(1);
  frame.Take();
  controller.refusesClose = true;
  wizard->cmdTerminate_Click();
  EXPECT_THAT(frame.Take(), ElementsAre("RequestClose", "OnCancel"));
  controller.refusesClose = false;
  frame.onCall = [&](const std::string& line) {
    // A second way out, tried while the first is under way, asks nothing and changes nothing.
    if (line != "OnCancel" && line != "PumpEvents") return;
    bool cancel = false;
    wizard->Form_QueryUnload(cancel);
    EXPECT_TRUE(cancel);
    if (line == "PumpEvents") wizard->Form_Unload();
  };
  frame.failing = {"SaveSettings", "DetachPage One", "ShowShutdown"};
  wizard->cmdTerminate_Click();
  Lines calls = frame.Take();
  EXPECT_EQ(std::erase(calls, "PumpEvents"), 20U);
  EXPECT_THAT(calls, ElementsAre("RequestClose", "OnCancel", "SaveSettings", "SetPageVisible Two off",
                                 "DetachPage One", "UnloadPage One", "DetachPage Two", "UnloadPage Two",
                                 "ShowShutdown", "End"));
  EXPECT_THAT(clock.sleeps,
              testing::AllOf(testing::SizeIs(20), testing::Each(std::chrono::milliseconds(50))));
  EXPECT_EQ(wizard->ClientHandle(), nullptr);
  EXPECT_EQ(wizard->PageHandle("Three"), nullptr);
}

TEST_F(WizardTest, ClosingDuringAStepEndsTheProgramWithoutFinish) {
  Open();
  frame.onCall = [&](const std::string& line) {
    if (line == "One BeforePageHide 2") frame.RequestClose();
    if (line == "End") {  // step, page, close, question, label, 20 rounds, end
      EXPECT_EQ(frame.calls.size(), 26U);
    }
  };
  wizard->Step(1);
  EXPECT_THAT(frame.calls, testing::Not(testing::Contains("SaveSettings")));
  EXPECT_THAT(frame.calls, testing::Contains("End").Times(1));
}

TEST_F(WizardTest, ReleasingTheControllerFinishesAndHarmsNothingAfterwards) {
  Open();
  wizard->ClientHandle(nullptr);
  EXPECT_THAT(frame.Take(),
              ElementsAre("SaveSettings", "SetPageVisible One off", "DetachPage One", "UnloadPage One"));
  EXPECT_EQ(wizard->PageHandle("One"), nullptr);
  EXPECT_NE(wizard->PageHandle("Two"), nullptr);  // Never loaded, so never taken down.
  wizard->cmdHelp_Click();
  wizard->picPage_GotFocus();
  wizard->Step(1);
  wizard->finish();
}

TEST_F(WizardTest, KeysActOnWhatIsEnabled) {
  struct KeyCase {
    const char* name;
    int step;
    bool frozen;
    std::int16_t key, shift;
    const char* call;  ///< The first call made, or none.
    bool handled;
    int beeps;
  };
  const KeyCase cases[] = {
      {"Escape", 1, false, 27, 0, "RequestClose", true, 0},
      {"Escape, shifted", 1, false, 27, 1, "", false, 0},
      {"Escape in a run", 4, true, 27, 0, "RequestClose", true, 0},
      {"Escape, button dead", 3, true, 27, 0, "", true, 0},
      {"Alt+Left", 2, false, 37, 4, "BeforeStep -1", false, 0},
      {"Alt+Left, first page", 1, false, 37, 4, "", false, 0},
      {"Alt+Right, frozen", 2, true, 39, 4, "", false, 0},
      {"Left", 2, false, 37, 0, "", false, 0},
      {"Alt+Right", 2, false, 39, 4, "BeforeStep 1", false, 0},
      {"Alt+Right, last page", 4, false, 39, 4, "", false, 0},
      {"Alt+Shift+Right", 2, false, 39, 5, "", false, 0},
      {"Enter", 2, false, 13, 0, "BeforeStep 1", true, 0},
      {"Enter, last page", 4, false, 13, 0, "RequestClose", true, 0},
      {"Enter, frozen", 2, true, 13, 0, "", false, 1},
      {"Alt+Enter", 2, false, 13, 4, "", false, 0},
      {"a letter", 2, false, 65, 0, "", false, 0},
  };
  Open();
  controller.refusesClose = true;
  for (const KeyCase& c : cases) {
    SCOPED_TRACE(c.name);
    wizard->StepTo(static_cast<double>(c.step));
    wizard->Frozen(c.frozen);
    frame.Take();
    user.beeps = 0;
    std::int16_t key = c.key;
    wizard->TranslateKey(key, c.shift);
    EXPECT_EQ(frame.calls.empty() ? "" : frame.calls.front(), c.call);
    EXPECT_EQ(key, c.handled ? 0 : c.key);
    EXPECT_EQ(user.beeps, c.beeps);
    wizard->Frozen(false);
  }
}

TEST_F(WizardTest, FocusGoesToTheLastButtonAndToThePage) {
  Open();
  wizard->TransferFocus();
  EXPECT_THAT(frame.Take(),
              ElementsAre("TabPosition cmdStepFwd 0", "TabPosition cmdTerminate 1", "TabPosition cmdHelp 2",
                          "TabPosition cmdStepBack 3", "PageAreaTabPosition 4", "FocusButton cmdStepFwd"));
  frame.failing = {"OnRequestHelp", "FocusPage One"};
  wizard->cmdHelp_Click();
  wizard->TransferFocus();
  wizard->picPage_GotFocus();
  const Lines calls = frame.Take();
  EXPECT_EQ(calls.front(), "OnRequestHelp");
  EXPECT_EQ(calls[6], "FocusButton cmdHelp");
  EXPECT_EQ(calls.back(), "FocusPage One");
}

}  // namespace
}  // namespace tarnwick::test
