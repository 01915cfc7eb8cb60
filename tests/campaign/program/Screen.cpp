#include "Screen.h"

#include <QApplication>
#include <QTest>
#include <QWindow>
#include <stdexcept>

#include "Reading.h"
#include "platform/awake.h"
#include "programmer/modProgrammer.h"
#include "support/ResetGlobals.h"
#include "wizard/WizardWindow.h"
#include "wizard/modWizard.h"

namespace tarnwick::campaign {
namespace {

QApplication& Prepared(const std::filesystem::path& folder) {
  test::ResetGlobals();
  gController = nullptr;
  program::Set({folder, "Tarnwick", 2, 2, 4});
  std::filesystem::current_path(folder);
  return *qApp;
}

}  // namespace

Screen::Screen(const std::filesystem::path& folder) : mApp(Prepared(folder)) {
  Seam<program::Ending>::Install(mEnding);
  Seam<awake::IKeeper>::Uninstall();  // This computer may sleep when it likes.
}

Screen::~Screen() {
  Seam<program::Ending>::Uninstall();
  gController = nullptr;
  std::filesystem::current_path("/");
}

void Screen::Start() {
  mApp.Start();
  while (!mApp.Window().isActiveWindow()) QCoreApplication::processEvents();
  mApp.Window().setUpdatesEnabled(false);
}

int Screen::Page() const {
  return gController->WizardHandle().CurrentStep();
}

template <class Widget>
Widget& Screen::Find(const char* name) {
  for (Widget* const each : mApp.Window().findChildren<Widget*>(QLatin1String(name)))
    if (each->isVisible()) return *each;
  throw std::logic_error(std::string("not on view: ") + name);
}

void Screen::ClickAt(QWidget& widget, QPoint at) {
  QWidget& window = mApp.Window();
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, widget.mapTo(&window, at));
}

void Screen::Click(const char* control) {
  QWidget& widget = Find(control);
  ClickAt(widget, widget.rect().center());
}

bool Screen::Choose(const char* list, const std::string& row) {
  auto& box = Find<QListWidget>(list);
  const QList<QListWidgetItem*> found = box.findItems(QString::fromStdString(row), Qt::MatchExactly);
  if (found.isEmpty()) return false;
  box.scrollToItem(found.front());
  ClickAt(*box.viewport(), box.visualItemRect(found.front()).center());
  return true;
}

void Screen::ChoosePort(const char* port) {
  Find<QComboBox>("cboComPort").setCurrentText(QLatin1String(port));
}

std::vector<std::string> Screen::Rows(const char* list) {
  std::vector<std::string> rows;
  auto& box = Find<QListWidget>(list);
  for (int row = 0; row < box.count(); ++row) rows.push_back(box.item(row)->text().toStdString());
  return rows;
}

bool Screen::IsLive(const char* control) {
  return Find(control).isEnabled();
}

std::string Screen::Caption(const char* button) {
  return Find<QPushButton>(button).text().toStdString();
}

std::string Screen::Progress() {
  if (mProgress == nullptr) mProgress = &Find("progress");
  return mProgress->accessibleDescription().toStdString();
}

std::vector<std::string> Screen::Lines(const char* text) {
  return LinesOf(Find<QPlainTextEdit>(text).toPlainText().toStdString());
}

std::string Screen::Reported(const std::string& motor, const std::string& what) {
  return campaign::Reported(Lines("txtStatus"), motor, what);
}

bool Screen::IsAtRest() {
  return !gController->WizardHandle().Frozen() && !gProgramming && IsLive("picPage") &&
         IsLive("cmdTerminate") && IsLive("cmdProgram") && Caption("cmdTerminate") == "Finish";
}

}  // namespace tarnwick::campaign
