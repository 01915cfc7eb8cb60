// The program's start until its first page is painted. The current directory is its portable folder.
#include <QApplication>
#include <filesystem>

#include "FirstPaint.h"
#include "app/App.h"
#include "platform/program.h"
#include "wizard/WizardWindow.h"

int main(int argc, char* argv[]) {
  using namespace tarnwick;
  QApplication application(argc, argv);
  program::Set({std::filesystem::current_path(), "Tarnwick", 1, 0, 0});
  App app(application);
  app.Start();
  bench::FirstPaint end(*app.Window().findChild<QWidget*>(QStringLiteral("cboDevice")));
  return QApplication::exec();
}
