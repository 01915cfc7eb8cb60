// The frame's window: keys, focus, close box, layout; with the real message boxes.
#include <gmock/gmock.h>

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include "platform/program.h"
#include "platform/qt/QtUser.h"
#include "programmer/modProgrammer.h"
#include "support/ClockDouble.h"
#include "support/LinkDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "wizard/Controls.h"
#include "wizard/PageWindow.h"
#include "wizard/WizardWindow.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {
namespace {

/// A page with a text field and a button, whose work and refusals are the test's.
class TestPage final : public PageWindow {
 public:
  explicit TestPage(int widthTwips) : PageWindow(widthTwips, 2730) {}
  void Form_Load() override {
    text = new QLineEdit(this);
    button = new QPushButton(QStringLiteral("Work"), this);
    button->move(0, TwipsToPixels(900));
    GiveKey(*button, Qt::ALT | Qt::Key_W);
    connect(button, &QPushButton::clicked, this, [this] { onWork(); });
  }
  QWidget* FirstControl() override { return text; }
  void BeforePageShow(CWizard&, std::int16_t) override {}
  void BeforePageHide(CWizard&, std::int16_t, bool& cancel) override {
    ++hides;
    onHide(cancel);
  }

  QLineEdit* text = nullptr;
  QPushButton* button = nullptr;
  int hides = 0;
  std::function<void()> onWork = [] {};
  std::function<void(bool&)> onHide = [](bool&) {};
};

class WindowTest : public testing::Test {
 public:
  WindowTest() {
    ResetGlobals();
    gController = nullptr;
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    program::SetEnd([this] { ended = true; });
    std::filesystem::current_path(folder.Path());
    QFont font;
    font.setPixelSize(11);
    QApplication::setFont(font);
  }
  ~WindowTest() override {
    controller.reset();
    program::SetEnd({});
    std::filesystem::current_path(std::filesystem::temp_directory_path());
  }
  void Start() {
    std::size_t made = 0;
    const auto make = [&] {
      auto page = std::make_unique<TestPage>(made < 2 ? 4485 : 6960);
      pages[made++] = page.get();
      return std::unique_ptr<IWizardPage>(std::move(page));
    };
    controller = Main(window, {make, make, make, make});
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  }
  CWizard& Wizard() { return controller->WizardHandle(); }
  int Step() { return Wizard().CurrentStep(); }
  QPushButton& Button(const char* name) { return *window.findChild<QPushButton*>(QLatin1String(name)); }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(window.windowHandle(), key, modifiers);
  }
  void Click(QWidget& widget) {
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {},
                      widget.mapTo(&window, widget.rect().center()));
  }
  /// When the next box is up, presses and releases `key` as a user does: the release finds the box gone.
  void AnswerNextBox(Qt::Key key) {
    QTimer::singleShot(0, &window, [this, key] {
      auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (box == nullptr || !box->isActiveWindow()) return AnswerNextBox(key);
      said = box->text().toStdString();
      QTest::keyPress(box->windowHandle(), key);
      QTimer::singleShot(0, &window, [this, key] { QTest::keyRelease(window.windowHandle(), key); });
    });
  }
  void Settle() {
    for (int round = 0; round < 10; ++round) QTest::qWait(1);
  }

  TempFolder folder;
  ClockDouble clock;
  LinkDouble link;
  qt::QtUser user;
  WizardWindow window;
  std::unique_ptr<CWizardController> controller;
  std::array<TestPage*, 4> pages{};
  std::string said;
  bool ended = false;
};

TEST_F(WindowTest, KeysActOnTheirReleaseWhenTheyWentDownHere) {
  Start();
  struct Row {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    int from, to;
  };
  const std::vector<Row> rows{{Qt::Key_Return, {}, 1, 2},
                              {Qt::Key_Enter, Qt::KeypadModifier, 1, 2},
                              {Qt::Key_Return, Qt::AltModifier, 1, 1},
                              {Qt::Key_Right, Qt::AltModifier, 1, 2},
                              {Qt::Key_Right, Qt::AltModifier | Qt::ShiftModifier, 1, 1},
                              {Qt::Key_Right, {}, 1, 1},
                              {Qt::Key_Left, Qt::AltModifier, 1, 1},
                              {Qt::Key_Left, Qt::AltModifier, 2, 1},
                              {Qt::Key_Right, Qt::AltModifier, 4, 4},
                              {Qt::Key_X, {}, 1, 1}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.key << " " << row.from);
    Wizard().StepTo(static_cast<double>(row.from));
    QTest::keyPress(window.windowHandle(), row.key, row.modifiers);
    EXPECT_EQ(Step(), row.from);
    QTest::keyRelease(window.windowHandle(), row.key, row.modifiers);
    EXPECT_EQ(Step(), row.to);
    Wizard().StepTo(static_cast<double>(row.from));
    QTest::keyRelease(window.windowHandle(), row.key, row.modifiers);
    EXPECT_EQ(Step(), row.from);
  }
  EXPECT_EQ(pages[0]->text->text(), QLatin1String("x"));
}

TEST_F(WindowTest, TheKeyThatAnsweredABoxDoesNothingElse) {
  Start();
  pages[0]->onHide = [](bool& cancel) {
    ui::MessageBox("No");
    cancel = true;
  };
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    AnswerNextBox(key);
    Key(Qt::Key_Return);
    Settle();
    EXPECT_EQ(std::exchange(said, {}), "No");
  }
  EXPECT_EQ(pages[0]->hides, 2);
  QTest::keyPress(window.windowHandle(), Qt::Key_Return);  // Held down while a box comes and goes.
  AnswerNextBox(Qt::Key_Escape);
  ui::MessageBox("Meanwhile");
  QTest::keyRelease(window.windowHandle(), Qt::Key_Return);
  EXPECT_EQ(pages[0]->hides, 2);
  AnswerNextBox(Qt::Key_Escape);  // Escape asks, and Escape answers No.
  Key(Qt::Key_Escape);
  Settle();
  EXPECT_EQ(said, "Are you sure you want to Exit the program?");
  EXPECT_FALSE(ended);
  EXPECT_EQ(Step(), 1);
  AnswerNextBox(Qt::Key_Return);
  window.close();
  EXPECT_TRUE(ended);
  EXPECT_EQ(clock.sleeps.size(), 20U);
}

TEST_F(WindowTest, EnterTakesTheDefaultButtonOrTheOneWithTheFocus) {
  Start();
  Wizard().StepTo(4.0);
  AnswerNextBox(Qt::Key_Escape);
  Key(Qt::Key_Return);
  EXPECT_EQ(std::exchange(said, {}), "Are you sure you want to Exit the program?");
  bool worked = false;
  pages[3]->onWork = [&] { worked = true; };
  pages[3]->button->setFocus();
  Key(Qt::Key_Return);
  EXPECT_TRUE(worked);
  Settle();
  EXPECT_EQ(said, "");
}

TEST_F(WindowTest, ARunLeavesOnlyTheWayToStopIt) {
  Start();
  Wizard().StepTo(4.0);
  gProgramming = true;
  pages[3]->onWork = [&] {
    Wizard().Frozen(true);
    for (const bool grey : {false, true}) {
      EXPECT_TRUE(!grey || QTest::qWaitFor([&] { return !pages[3]->isEnabled(); }));
      Key(Qt::Key_Space);  // The focus did not fall on the one button that is live.
      pages[3]->text->setFocus();
      Key(Qt::Key_X);
      QTest::keyClick(&window, Qt::Key_W, Qt::AltModifier);  // would start it all once more
      Click(Button("cmdStepBack"));
      Click(*pages[3]->button);
      EXPECT_EQ(said, "");
      window.setFocus();
    }
    AnswerNextBox(Qt::Key_Escape);
    Key(Qt::Key_Escape);  // Reaches the engine though the page is disabled.
    EXPECT_EQ(std::exchange(said, {}).substr(0, 22), "Cancelling Programming");
    EXPECT_FALSE(gCancelProgram);
    AnswerNextBox(Qt::Key_Return);
    window.close();
    EXPECT_TRUE(gCancelProgram);
    EXPECT_FALSE(Button("cmdTerminate").isEnabled());
    Wizard().Frozen(false);
  };
  pages[3]->button->setFocus();
  Key(Qt::Key_Space);
  EXPECT_TRUE(gCancelProgram);
  EXPECT_EQ(window.focusWidget(), pages[3]->button);
  EXPECT_EQ(pages[3]->text->text(), QString());
  EXPECT_FALSE(ended);
  EXPECT_EQ(Step(), 4);
}

TEST_F(WindowTest, NextPressedAgainDuringItsWorkIsLost) {
  Start();
  pages[0]->onHide = [&](bool&) {
    for (const bool frozen : {false, true, false}) {
      Wizard().Frozen(frozen);
      Click(Button("cmdStepFwd"));
      Key(Qt::Key_Return);
      Key(Qt::Key_Right, Qt::AltModifier);
      Key(Qt::Key_Escape);
    }
  };
  Click(Button("cmdStepFwd"));
  EXPECT_EQ(Step(), 2);
  EXPECT_EQ(pages[0]->hides, 1);
  EXPECT_EQ(pages[1]->hides, 0);
  EXPECT_EQ(window.focusWidget(), pages[1]->text);
}

TEST_F(WindowTest, TheFrameFitsItsPageAndStaysWhereTheUserPutIt) {
  Start();
  EXPECT_EQ(window.size(), QSize(439, 275));
  window.move(3, 5);
  Click(Button("cmdStepFwd"));
  EXPECT_EQ(window.pos(), QPoint(3, 5));
  Click(Button("cmdStepFwd"));
  EXPECT_EQ(window.width(), 604);
  EXPECT_NE(window.pos(), QPoint(3, 5));
  EXPECT_EQ(QCursor::pos(), Button("cmdStepFwd").mapToGlobal(QPoint(40, 11)));
  EXPECT_EQ(Button("cmdStepBack").text(), QLatin1String("<  Back"));
  Button("cmdTerminate").setText(QStringLiteral("&Exit"));
  EXPECT_EQ(window.Caption(FrameButton::cmdTerminate), "Exit");
}

TEST_F(WindowTest, EverythingGrowsWithTheFont) {
  QFont font;
  font.setPixelSize(22);
  QApplication::setFont(font);
  EXPECT_EQ(TwipsToPixels(4485), 598);
  Start();
  EXPECT_EQ(window.width(), 878);
  EXPECT_EQ(Button("cmdHelp").size(), QSize(160, 46));
}

}  // namespace
}  // namespace tarnwick::test
