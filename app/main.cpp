#include <QApplication>

#include "app/App.h"
#include "platform/process.h"
#include "platform/program.h"
#include "webupdate/Swap.h"

int main(int argc, char* argv[]) {
  // An update that was cut is completed before anything of this program and its link library can be mixed.
  if (tarnwick::CompleteSwap(tarnwick::program::This().folder) == tarnwick::Unfinished::Completed)
    tarnwick::process::Become(tarnwick::program::Executable());
  QApplication application(argc, argv);
  tarnwick::App app(application);
  app.Start();
  return QApplication::exec();
}
