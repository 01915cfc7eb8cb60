// The table of pages and the walk.
#include "WizardFixture.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(WizardTest, StepIsOneOrderOfCallsAndGoingBackLoadsNothing) {
  Open();
  frame.onCall = [&](const std::string& line) {
    EXPECT_EQ(wizard->FinishedLoading(), !line.starts_with("LayoutFrame"));
  };
  wizard->cmdStepFwd_Click();
  EXPECT_THAT(frame.Take(),
              ElementsAre("BeforeStep 1", "One BeforePageHide 2", "SetPageVisible One off", "LoadPage Two",
                          "AttachPage Two", "Two BeforePageShow 1", "SetPageVisible Two on",
                          "LayoutFrame Two centre cmdStepFwd", "Enabled cmdStepBack on",
                          "Enabled cmdStepFwd on", "Default cmdStepFwd on", "Default cmdTerminate off",
                          "PageAreaTabPosition 5", "FocusPageArea", "AfterStep"));
  EXPECT_EQ(Numbers(), (std::array{1, 2, -1}));
  wizard->cmdStepBack_Click();
  const Lines back = frame.Take();
  EXPECT_THAT(
      Lines(back.begin(), back.begin() + 6),
      ElementsAre("BeforeStep -1", "Two BeforePageHide 1", "SetPageVisible Two off", "One BeforePageShow 2",
                  "SetPageVisible One on", "LayoutFrame One centre cmdStepBack"));
}

TEST_F(WizardTest, EveryFailureIsDroppedWhereItHappens) {
  // The step from 3 to 4 in full; a failure in the switch skips the rest of the switch and no more.
  const std::size_t kSwitchBegin = 1, kSwitchEnd = 7;
  Lines whole;
  {
    Open(3);
    wizard->Step(1);
    whole = frame.Take();
    ASSERT_EQ(whole.size(), 18U);
    ASSERT_EQ(whole[kSwitchEnd], "LayoutFrame Four centre");
  }
  for (std::size_t failed = 0; failed < whole.size(); ++failed) {
    SCOPED_TRACE(whole[failed]);
    FrameDouble other;
    ControllerDouble owner(other);
    CWizard again(other, {});
    again.ClientHandle(&owner);
    for (const char* name : {"One", "Two", "Three", "Four"}) {
      again.AddPage(std::make_unique<PageDouble>(other, name), name);
    }
    again.Start("Three");
    other.Take();
    other.failing = {whole[failed]};
    again.Step(1);
    Lines expected = whole;
    if (failed >= kSwitchBegin && failed < kSwitchEnd) {
      expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(failed) + 1,
                     expected.begin() + static_cast<std::ptrdiff_t>(kSwitchEnd));
    }
    EXPECT_EQ(other.Take(), expected);
    EXPECT_EQ(again.CurrentStep(), 4);
    EXPECT_EQ(again.LastStep(), 3);
    EXPECT_EQ(again.NextStep(), -1);
    EXPECT_TRUE(again.FinishedLoading());
    again.Step(-1);
    EXPECT_EQ(again.CurrentStep(), 3) << "a failed step left the guard up";
  }
}

TEST_F(WizardTest, RefusalsLeaveEverythingAndKeepTheTarget) {
  Open(2);
  pages[1]->refuses = true;
  wizard->Step(1);
  EXPECT_THAT(frame.Take(), ElementsAre("BeforeStep 1", "Two BeforePageHide 3"));
  EXPECT_EQ(Numbers(), (std::array{0, 2, 3}));
  wizard->Step(0);
  EXPECT_THAT(frame.Take(), ElementsAre("BeforeStep 0", "Two BeforePageHide 3"));
  controller.refusesStep = true;
  frame.failing = {"BeforeStep -1"};  // A failure leaves the refusal as it was set.
  wizard->Step(-1);
  EXPECT_THAT(frame.Take(), ElementsAre("BeforeStep -1"));
  EXPECT_EQ(Numbers(), (std::array{0, 2, 1}));
}

TEST_F(WizardTest, StepsThatLeadNowhereAreSilent) {
  Open();
  for (const std::int32_t direction : {2, -2, -1, 0}) wizard->Step(direction);
  for (const Designation& none : {Designation(), Designation(""), Designation("Five"), Designation(5.0)}) {
    wizard->StepTo(none);
  }
  wizard->NextStep("Two");  // Acts during a step only.
  EXPECT_THAT(frame.Take(), IsEmpty());
  EXPECT_EQ(Numbers(), (std::array{0, 1, -1}));
  wizard->StepTo("Four");
  frame.Take();
  wizard->Step(1);
  EXPECT_THAT(frame.Take(), IsEmpty());
}

TEST_F(WizardTest, StepToJumpsAndTheControllerRedirects) {
  Open();
  wizard->StepTo("Three");
  Lines calls = frame.Take();
  EXPECT_THAT(Lines(calls.begin(), calls.begin() + 6),
              ElementsAre("BeforeStep 0", "One BeforePageHide 3", "SetPageVisible One off", "LoadPage Three",
                          "AttachPage Three", "Three BeforePageShow 1"));
  frame.onCall = [&](const std::string& line) {
    if (line == "BeforeStep -1") wizard->NextStep(4.0);
    if (line == "Three BeforePageHide 4") wizard->NextStep("One");  // Too late to change the page shown.
    if (line == "Four BeforePageShow 3") {
      EXPECT_EQ(Numbers(), (std::array{1, 3, 1}));
    }
  };
  wizard->Step(-1);
  EXPECT_EQ(Numbers(), (std::array{3, 4, -1}));
  frame.onCall = {};
  wizard->CurrentStep("2");
  EXPECT_EQ(wizard->CurrentStep(), 2);
}

TEST_F(WizardTest, NothingButARedirectActsDuringAStep) {
  Open();
  frame.onCall = [&](const std::string& line) {
    if (line != "One BeforePageHide 2") return;
    std::int16_t key = 27;
    wizard->Step(1);
    wizard->StepTo("Four");
    wizard->CurrentStep("Four");
    wizard->ClientHandle(nullptr);
    wizard->finish();
    wizard->TransferFocus();
    wizard->TranslateKey(key, 0);
    EXPECT_EQ(key, 27);
    EXPECT_EQ(wizard->NextStep(), 2);
    for (int i = 0; i < 100; ++i) Add("More", {});  // The table may grow under the step.
  };
  wizard->Step(1);
  frame.onCall = {};
  EXPECT_EQ(wizard->CurrentStep(), 2);
  EXPECT_EQ(wizard->StepCount(), 104);
  EXPECT_EQ(wizard->ClientHandle(), &controller);
  EXPECT_EQ(frame.calls.size(), 15U);
}

TEST_F(WizardTest, DesignationsAndDuplicateKeys) {
  Add("a", "Key");
  Add("b", "Key");  // Dropped.
  Add("c", "KEY");
  Add("d", "2");
  Add("e", "2");  // A key that reads as a number is no duplicate, and is never found.
  Add("f", {});
  Add("g", 7.0);
  EXPECT_EQ(wizard->StepCount(), 6);
  const std::pair<Designation, const char*> cases[] = {
      {"Key", "a"}, {"KEY", "c"}, {"key", ""}, {" Key", ""}, {"2", "c"}, {" 2 ", "c"}, {2.5, "c"},
      {3.5, "e"},   {0.5, ""},    {0.51, "a"}, {6.0, "g"},   {7.0, ""},  {"7", ""},    {-1.0, ""},
      {1e9, ""},    {"1e0", ""},  {"-1", ""},  {"2.5", "c"}, {"", ""},   {{}, ""},     {"0x1", ""},
  };
  for (const auto& [designation, name] : cases) {
    EXPECT_EQ(frame.names[wizard->PageHandle(designation)], name) << &designation - &cases[0].first;
  }
}

TEST_F(WizardTest, TheTerminateCaptionFollowsTheStep) {
  Open(4);
  EXPECT_EQ(Terminate(), "Finish");
  for (const auto& [before, after] :
       {std::pair{"Cancel", "Exit"}, {"Finish", "Exit"}, {"finish", "finish"}}) {
    frame.Caption(FrameButton::cmdTerminate, before);
    wizard->Step(-1);
    EXPECT_EQ(Terminate(), after);
    EXPECT_FALSE(frame.Default(FrameButton::cmdTerminate));
    wizard->Step(1);
    EXPECT_EQ(Terminate(), "Finish");
    EXPECT_TRUE(frame.Default(FrameButton::cmdTerminate));
  }
}

}  // namespace
}  // namespace tarnwick::test
