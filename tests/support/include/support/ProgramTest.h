// The whole program in a folder of its own, its real window driven by mouse and keys, its user scripted.
#pragma once

#include <gmock/gmock.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/App.h"
#include "platform/awake.h"
#include "platform/program.h"
#include "support/CalmHands.h"
#include "support/ClockDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "wizard/WizardWindow.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {

class ProgramTest : public testing::Test {
 public:
  ProgramTest() : app((Prepare(folder), *qApp)) {
    Seam<program::Ending>::Install(ending);
    Seam<awake::IKeeper>::Uninstall();  // The tester's computer may sleep when it likes.
    user.onPump = [this] {
      QCoreApplication::processEvents();
      if (onPump) onPump();
    };
  }
  ~ProgramTest() override {
    user.onPump = {};
    Seam<program::Ending>::Uninstall();
    gController = nullptr;
    std::filesystem::current_path(std::filesystem::temp_directory_path());
  }

  void Start() {
    app.Start();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  }

  /// The visible control of that name, or null.
  template <class Widget = QWidget>
  Widget* OnView(const char* name) {
    const auto found = window.findChildren<Widget*>(QLatin1String(name));
    const auto visible =
        std::find_if(found.begin(), found.end(), [](Widget* each) { return each->isVisible(); });
    return visible == found.end() ? nullptr : *visible;
  }
  template <class Widget = QWidget>
  Widget& Find(const char* name) {
    if (Widget* const found = OnView<Widget>(name)) return *found;
    throw std::logic_error(std::string("not on view: ") + name);
  }
  /// A click where the control is, as the window system tells it: a disabled control gets none.
  void Click(const char* name) { ClickAt(Find(name), Find(name).rect().center()); }
  void ClickAt(QWidget& widget, QPoint at, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, modifiers, widget.mapTo(&window, at));
  }
  void ClickRow(const char* list, int row, Qt::KeyboardModifiers modifiers = {}) {
    auto& box = Find<QListWidget>(list);
    box.scrollToItem(box.item(row));
    ClickAt(*box.viewport(), box.visualItemRect(box.item(row)).center(), modifiers);
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(window.windowHandle(), key, modifiers);
  }
  /// From the first page on to page `step`, over the port with that name.
  void WalkTo(int step, const char* port = "COM5") {
    while (Step() < step) {
      const int before = Step();
      if (before == 2) Find<QComboBox>("cboComPort").setCurrentText(QLatin1String(port));
      Click("cmdStepFwd");
      ASSERT_EQ(Step(), before + 1) << testing::PrintToString(Said());
    }
  }

  int Step() { return gController->WizardHandle().CurrentStep(); }
  std::string Text(const char* name) { return Find<QPlainTextEdit>(name).toPlainText().toStdString(); }
  std::string Caption(const char* name) { return Find<QPushButton>(name).text().toStdString(); }
  std::string Progress() { return Find("progress").accessibleDescription().toStdString(); }
  bool Live(const char* name) { return Find(name).isEnabled(); }
  std::vector<std::string> Items(const char* list) {
    std::vector<std::string> items;
    auto& box = Find<QListWidget>(list);
    for (int row = 0; row < box.count(); ++row) items.push_back(box.item(row)->text().toStdString());
    return items;
  }
  /// The selected row, or -1.
  int Selected(const char* list) {
    const auto rows = Find<QListWidget>(list).selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
  }
  std::vector<std::string> Said() { return user.Said(); }
  /// Asserts that nothing runs and the page can be used.
  void ExpectAtRest() {
    EXPECT_FALSE(gController->WizardHandle().Frozen());
    EXPECT_TRUE(Live("picPage") && Live("cmdHelp") && Live("cmdTerminate"));
    EXPECT_EQ(window.windowTitle(), QLatin1String("Tarnwick  v2.2.4"));
    EXPECT_FALSE(gProgramming || gVerifying || ended);
    if (Step() != 4) return;
    EXPECT_TRUE(Live("cmdProgram") && Live("cmdVerify") && Live("cmdRefresh"));
    EXPECT_EQ(Caption("cmdTerminate"), "Finish");
    EXPECT_EQ(Progress(), "");
  }

  TempFolder folder;
  ClockDouble clock;
  App app;
  CalmHands hands;
  UserDouble user;
  WizardWindow& window = app.Window();
  std::function<void()> onPump;  ///< Runs in each round of events.
  bool ended = false;
  program::Ending ending{[this] { ended = true; }};

 private:
  static void Prepare(const TempFolder& folder) {
    ResetGlobals();
    gController = nullptr;
    program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
    std::filesystem::create_directory(folder / "ports");
    std::filesystem::create_directory(folder / "MotorControllers");
    std::filesystem::current_path(folder.Path());
  }
};

}  // namespace tarnwick::test
