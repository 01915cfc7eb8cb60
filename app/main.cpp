#include <QApplication>
#include <cstdio>

#include "FirstPage.h"
#include "app/App.h"
#include "link/LinkLibrary.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/record.h"
#include "platform/ui.h"
#include "webupdate/Start.h"
#include "wizard/WizardWindow.h"

namespace {

using namespace tarnwick;

/// Whether program and library, as they lie here, can run on this computer.
bool RunsHere() {
  return !files::FileExists(LinkLibraryFile()) || Link().getDllVersion() != std::array<std::int32_t, 3>{};
}

int RunWindow(int argc, char* argv[], const Beginning& beginning) {
  QApplication application(argc, argv);
  App app(application);
  if (beginning.dropped) record::Failure("update of the program, not installed", beginning.cause);
  if (const std::string why = WhyNoStart(beginning); !why.empty()) {
    record::Failure("start", beginning.cause);
    ui::MessageBox(why);
    return beginning.status;
  }
  app.Start();
  OnFirstPaint(app.Window(), [] {
    if (const std::string told = FirstPageShown(); !told.empty()) ui::MessageBox(told);
  });
  return QApplication::exec();
}

}  // namespace

int main(int argc, char* argv[]) {
  program::OutliveTerminal();
  if (argc == 2 && argv[1] == kTrial) return RunsHere() ? 0 : 1;
  // Before anything of this program and its link library can be mixed.
  App::TrustBuiltInKey();
  const Beginning beginning = BeginProgram(TryProgram);
  return beginning.what == Beginning::What::End ? beginning.status : RunWindow(argc, argv, beginning);
}
