// The window of the help. What its pages hold is looked at by help_pages_test.py.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTextBrowser>

#include "platform/qt/HelpWindow.h"

namespace tarnwick::test {
namespace {

TEST(HelpWindow, ShowsGoesBackAndFindsInItsOwnPages) {
  qt::HelpWindow help;
  help::Show("Step2.htm");
  ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() != nullptr; }));
  QWidget* const view = QApplication::activeWindow();
  auto& page = *view->findChild<QTextBrowser*>();
  auto& field = *view->findChild<QLineEdit*>();
  const auto on = [&] { return page.source().toString().toStdString(); };
  EXPECT_EQ(on(), "Step2.htm");
  for (const char* const link : {"http://there/Step1.htm", "/etc/passwd"}) {
    emit page.anchorClicked(QUrl(link));
    EXPECT_EQ(on(), "Step2.htm") << link;
  }
  emit page.anchorClicked(QUrl("Step4.htm#stopped"));
  EXPECT_EQ(on(), "Step4.htm#stopped");
  QTest::keyClick(view, Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(on(), "Step2.htm");

  const auto find = [&](const char* words) {
    field.setText(words);
    QTest::keyClick(&field, Qt::Key_Return);
    return page.textCursor().selectedText();
  };
  EXPECT_EQ(find(" unable to  ENTER boot"), "Unable to enter boot");
  EXPECT_EQ(on(), "Step4.htm");
  const int hit = page.textCursor().position();
  EXPECT_EQ(find("xyzzy"), "Unable to enter boot");
  EXPECT_EQ(view->findChild<QLabel*>("lblFind")->text(), "Not found");
  find("unable to enter boot");
  EXPECT_EQ(page.textCursor().position(), hit) << "Round all pages and back to the only hit.";
  QTest::keyClick(&field, Qt::Key_Escape);
  EXPECT_EQ(QApplication::activeWindow(), nullptr);
}

}  // namespace
}  // namespace tarnwick::test
