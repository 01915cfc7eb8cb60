// The program as it is composed: what no room can show alone.
#include <gmock/gmock.h>

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>

#include "app/App.h"
#include "platform/program.h"
#include "support/TempFolder.h"
#include "wizard/WizardWindow.h"

namespace tarnwick::test {
namespace {

TEST(App, F1ShowsTheHelpOfThePageAsItsButtonDoes) {
  const TempFolder folder;
  program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
  std::filesystem::current_path(folder.Path());
  App app(*qApp);
  app.Start();
  WizardWindow& window = app.Window();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  auto& button = *window.findChild<QPushButton*>("cmdHelp");
  const auto shown = []() -> std::string {
    for (const QWidget* const top : QApplication::topLevelWidgets()) {
      if (top->objectName() != "help" || !top->isVisible()) continue;
      return top->findChild<QTextBrowser*>()->source().toString().toStdString();
    }
    return {};
  };
  button.setEnabled(false);
  QTest::keyClick(window.windowHandle(), Qt::Key_F1);
  button.setEnabled(true);
  QTest::keyClick(window.windowHandle(), Qt::Key_F1, Qt::AltModifier);
  QTest::keyRelease(window.windowHandle(), Qt::Key_F1);
  EXPECT_EQ(shown(), "");
  QTest::keyClick(window.windowHandle(), Qt::Key_F1);
  EXPECT_EQ(shown(), "Step1.htm");
  QTest::keyClick(window.windowHandle(), Qt::Key_Right, Qt::AltModifier);
  button.click();
  EXPECT_EQ(shown(), "Step2.htm");
  std::filesystem::current_path(std::filesystem::temp_directory_path());
}

}  // namespace
}  // namespace tarnwick::test
