// The program is left, or the session ends, at every moment at which the program looks. What else hands can do
// meanwhile the campaign of the hands plays.
#include <sys/wait.h>
#include <unistd.h>

#include <QSessionManager>

#include "PagesTest.h"
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
    Azm().bootVersion = Alt().bootVersion = 1;
    Start();
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

  bool stepping = false;
};

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
