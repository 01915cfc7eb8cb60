// The user does what can be done at every moment at which the program looks.
#include <sys/wait.h>
#include <unistd.h>

#include <QSessionManager>
#include <set>

#include "PagesTest.h"
#include "firmware/QALclass.h"
#include "programmer/modProgrammer.h"

namespace {

/// What the session manager offers, and what it was told. There is none on the platform of the tests, so the
/// toolkit's way to it is replaced below.
struct Session {
  bool asks = true;
  bool held = false;  ///< The log-out was called off.
} gSession;

}  // namespace

bool QSessionManager::allowsInteraction() {
  return gSession.asks;
}
void QSessionManager::cancel() {
  gSession.held = true;
}
void QSessionManager::release() {}

namespace tarnwick::test {
namespace {

class Disturbed : public PagesTest {
 public:
  Disturbed() { Put("B.qal", PackageText(5, "5", kBoth)); }
  /// The way through the program, told to `moment` before each round of events.
  void Visit(const std::function<void()>& moment) {
    Azm().state = Alt().state = Azm().bootVersion = Alt().bootVersion = 1;
    if (gController == nullptr) Start();
    while (Step() > 1) Click("cmdStepBack");
    Calls();
    int target = 0;
    onPump = [this, &moment, &target] {
      stepping = stepping && Step() != target;
      if (Wizard().Frozen() || stepping) moment();
    };
    for (const int step : {2, 3, 4}) {
      stepping = true;
      target = step;
      if (step == 3) Find<QComboBox>("cboComPort").setCurrentText(QStringLiteral("COM5"));
      Click("cmdStepFwd");
      stepping = false;
      ASSERT_EQ(Step(), step);
      if (step != 2) Click("cmdRefresh");
      if (step == 3) ClickRow("lstFirmware", 1);
    }
    ClickRow("lstDevices", 0);
    for (const char* const button : {"cmdVerify", "cmdProgram"}) Click(button);
    onPump = {};
  }
  /// Everything that a user can try without meaning to stop anything.
  void Fiddle() {
    for (const char* const button : {"cmdStepFwd", "cmdStepFwd", "cmdStepBack", "cmdHelp"}) Click(button);
    const bool locked = Wizard().Frozen();
    EXPECT_TRUE(!locked || (window.cursor().shape() == Qt::WaitCursor && !Live("cmdHelp")));
    if (OnView("lstFirmware") && locked) {
      const int chosen = Selected("lstFirmware");
      ClickRow("lstFirmware", 1 - chosen);
      Find("lstFirmware").setFocus();
      Key(chosen == 0 ? Qt::Key_Down : Qt::Key_Up);
      window.setFocus();
      EXPECT_EQ(Selected("lstFirmware"), chosen);
    }
    if (OnView("cmdProgram")) Click("cmdProgram");
    Key(Qt::Key_Right, Qt::AltModifier);
    Key(Qt::Key_Space);
    if (gVerifying) return;
    user.answers.assign(3, ui::Answer::No);
    Key(Qt::Key_Escape);
    Key(Qt::Key_Return);
    window.close();
    user.answers.clear();
  }

  bool stepping = false;
};

TEST_F(Disturbed, AtEveryMomentTheWorkIsDoneAllTheSame) {
  Visit([] {});
  const std::vector<std::string> undisturbed = Calls();
  EXPECT_EQ(Said().size(), 2U);  // Identical, complete.
  int moments = 0;
  bool within = false;
  Visit([&] {
    if (std::exchange(within, true)) return;
    ++moments;
    Fiddle();
    within = false;
  });
  EXPECT_GT(moments, 50);
  EXPECT_EQ(Calls(), undisturbed);
  EXPECT_EQ(gQAL->RealFilename(), folder / "MotorControllers/B.qal");
  ExpectAtRest();
}

TEST_F(Disturbed, StoppedAtAnyMomentARunLeavesThePageUsable) {
  Start();
  WalkTo(4);
  ClickRow("lstDevices", 0);
  std::set<std::string> said;
  for (const char* const button : {"cmdVerify", "cmdProgram"}) {
    bool reached = true;
    for (int moment = 1; reached; ++moment) {
      Azm().state = Alt().state = 1;
      Click("cmdRefresh");
      reached = false;
      onPump = [&, now = 0]() mutable {
        if ((!gProgramming && !gVerifying) || ++now != moment) return;
        reached = true;
        if (gVerifying) return window.close(), void();
        Key(Qt::Key_Escape);
        EXPECT_EQ(user.boxes.size(), 1U) << "The page is locked, not the frame.";
      };
      Click(button);
      onPump = {};
      ExpectAtRest();
      for (const std::string& box : Said()) said.insert(box);
    }
  }
  EXPECT_THAT(
      said,
      testing::UnorderedElementsAre(
          "Ok i|Contents are Identical", "Ok !|Verify cancelled by user",
          "YesNo X|Cancelling Programming at this stage would leave the device in Program mode\r\nmaking the "
          "firmware unusable until reprogrammed!\r\n\r\nAre you sure you want to Cancel Programming?",
          "Ok i|Programming Complete\r\n\r\nCycle the power on the telescope at this point, then press "
          "Ok.\r\nThe controller(s) programmed should then be in Running State and\r\nthe proper Version "
          "displayed."));
}

TEST_F(Disturbed, LeavingAtAnyMomentEndsTheProgramAtOnce) {
  // Each time in a process of its own, which is started anew: the toolkit has threads by now.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  constexpr int kLeft = 0, kVisited = 2, kFailed = 3;
  const auto end = [this](int status) {
    std::filesystem::remove_all(folder.Path());
    ::_exit(status);
  };
  // Settings are saved on the way out, but for a page that is still at work on its step.
  ending.run = [this, end] {
    const bool saved = std::filesystem::exists(folder / "Tarnwick.ini");
    end(saved == !stepping && !HasFailure() ? kLeft : kFailed);
  };
  const auto leaveAt = [&](int moment) {
    Visit([&, now = 0]() mutable {
      if (gProgramming || gVerifying || ++now < moment) return;
      window.close();
      Key(Qt::Key_Escape);  // While it says that it is shutting down.
      Key(Qt::Key_Return);
    });
    end(HasFailure() ? kFailed : kVisited);
  };
  int outcome = kLeft;
  const auto sound = [&](int status) {
    outcome = WIFEXITED(status) ? WEXITSTATUS(status) : kFailed;
    return outcome != kFailed;
  };
  int moment = 0;
  while (outcome == kLeft && ++moment < 50) EXPECT_EXIT(leaveAt(moment), sound, "") << moment;
  EXPECT_EQ(outcome, kVisited);
  EXPECT_GT(moment, 15);
}

TEST_F(Disturbed, LoggingOutAsksAsTheCloseBoxDoesAndNeverStopsARunUnasked) {
  Start();
  const auto logOut = [this](bool asks, ui::Answer answer) {
    gSession = {.asks = asks};
    user.answers = {answer};
    emit qApp->commitDataRequest(*qApp->findChild<QSessionManager*>());
    user.answers.clear();
    return gSession.held;
  };
  const std::string exit = "YesNo ?|Are you sure you want to Exit the program?";
  EXPECT_TRUE(logOut(true, ui::Answer::No) && !ended);
  EXPECT_THAT(Said(), testing::ElementsAre(exit));
  EXPECT_FALSE(logOut(false, ui::Answer::No) || ended) << "Who may not ask does not hold anything up.";
  WalkTo(4);
  ClickRow("lstDevices", 1);
  std::string held;
  onPump = [&] {
    if (!gProgramming || held.size() == 3 || link.blocks.empty()) return;
    const bool no = held.size() < 2;
    held += logOut(!held.empty(), no ? ui::Answer::No : ui::Answer::Yes) ? "h" : "-";
    EXPECT_EQ(gCancelProgram, !no);
    EXPECT_EQ(Said().size(), held.size() == 1 ? 0U : 1U);
  };
  Click("cmdProgram");
  EXPECT_EQ(held, "hhh") << "Unasked, after No, and after Yes, until the block under way is sent.";
  EXPECT_FALSE(logOut(true, ui::Answer::Yes));
  EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace tarnwick::test
