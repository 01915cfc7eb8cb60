// The frame's window round the real pages: keys, focus, place and help; with the real message boxes.
#include <QMessageBox>
#include <QTextBrowser>
#include <QTimer>

#include "PagesTest.h"
#include "platform/help.h"
#include "platform/qt/QtUser.h"

namespace tarnwick::test {
namespace {

class Window : public PagesTest {
 public:
  Window() { app.Start(); }
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
  /// What was asked since, once all that was set off is done.
  std::string Asked() {
    for (int round = 0; round < 10; ++round) QTest::qWait(1);
    return std::exchange(said, {});
  }

  qt::QtUser real;
  std::string said;
};

TEST_F(Window, KeysActOnTheirReleaseWhenTheyWentDownHere) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
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
                              {Qt::Key_Right, Qt::AltModifier, 4, 4}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.key << " " << row.from);
    Wizard().StepTo(static_cast<double>(row.from));
    QTest::keyRelease(window.windowHandle(), row.key, row.modifiers);
    QTest::keyPress(window.windowHandle(), row.key, row.modifiers);
    EXPECT_EQ(Step(), row.from);
    QTest::keyRelease(window.windowHandle(), row.key, row.modifiers);
    EXPECT_EQ(Step(), row.to);
  }
}

TEST_F(Window, TheKeyThatAnsweredABoxDoesNothingElse) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  WalkTo(2);
  Find<QComboBox>("cboComPort").setCurrentText(QStringLiteral("COM5"));
  link.openResult = -1;
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    AnswerNextBox(key);
    Key(Qt::Key_Return);
    EXPECT_EQ(Asked(), "Error Opening COM5");
  }
  QTest::keyPress(window.windowHandle(), Qt::Key_Return);  // Held down while a box comes and goes.
  AnswerNextBox(Qt::Key_Escape);
  ui::MessageBox("Meanwhile");
  QTest::keyRelease(window.windowHandle(), Qt::Key_Return);
  EXPECT_THAT(Calls(), testing::ElementsAre("initSerial COM5", "initSerial COM5"));
  AnswerNextBox(Qt::Key_Escape);  // Escape asks, and Escape answers No.
  Key(Qt::Key_Escape);
  EXPECT_EQ(Asked(), "Are you sure you want to Exit the program?");
  EXPECT_FALSE(ended);
  AnswerNextBox(Qt::Key_Return);
  window.close();
  EXPECT_TRUE(ended);
  EXPECT_EQ(clock.sleeps.size(), 20U);
}

TEST_F(Window, EnterTakesTheDefaultButtonOrTheOneWithTheFocus) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  WalkTo(4);
  Calls();
  Wizard().Frozen(true);
  QTest::keyClick(&window, Qt::Key_R, Qt::AltModifier);  // A button's own key is locked as the button is.
  EXPECT_EQ(Calls().size(), 0U);
  Wizard().Frozen(false);
  QTest::keyClick(&window, Qt::Key_R, Qt::AltModifier);
  EXPECT_EQ(Calls().size(), 6U);
  AnswerNextBox(Qt::Key_Escape);
  Key(Qt::Key_Return);
  EXPECT_EQ(Asked(), "Are you sure you want to Exit the program?");
  Find("cmdRefresh").setFocus();
  Key(Qt::Key_Return);
  EXPECT_EQ(Calls().size(), 6U);
  EXPECT_EQ(Asked(), "");
}

TEST_F(Window, FitsItsPageAndStaysWhereTheUserPutIt) {
  EXPECT_EQ(window.size(), QSize(439, 275));
  window.move(3, 5);
  WalkTo(2);
  EXPECT_EQ(window.pos(), QPoint(3, 5));
  WalkTo(3);
  EXPECT_EQ(window.width(), 604);
  EXPECT_NE(window.pos(), QPoint(3, 5));
  EXPECT_EQ(QCursor::pos(), Find("cmdStepFwd").mapToGlobal(QPoint(40, 11)));
  Find<QPushButton>("cmdTerminate").setText(QStringLiteral("&Exit"));
  EXPECT_EQ(window.Caption(FrameButton::cmdTerminate), "Exit");
}

TEST_F(Window, F1ShowsTheHelpOfThePageAsItsButtonDoes) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  const auto shown = []() -> std::string {
    for (const QWidget* const top : QApplication::topLevelWidgets()) {
      if (top->objectName() != "help" || !top->isVisible()) continue;
      return top->findChild<QTextBrowser*>()->source().toString().toStdString();
    }
    return {};
  };
  Find("cmdHelp").setEnabled(false);
  Key(Qt::Key_F1);
  Find("cmdHelp").setEnabled(true);
  Key(Qt::Key_F1, Qt::AltModifier);
  QTest::keyRelease(window.windowHandle(), Qt::Key_F1);
  EXPECT_EQ(shown(), "");
  Key(Qt::Key_F1);
  EXPECT_EQ(shown(), "Step1.htm");
  Key(Qt::Key_Right, Qt::AltModifier);
  Click("cmdHelp");
  EXPECT_EQ(shown(), "Step2.htm");
}

}  // namespace
}  // namespace tarnwick::test
