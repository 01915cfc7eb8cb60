#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

#include "FirstPage.h"
#include "app/App.h"
#include "link/LinkLibrary.h"
#include "platform/cli.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/record.h"
#include "platform/ui.h"
#include "webupdate/Start.h"
#include "wizard/WizardWindow.h"

namespace {

using namespace tarnwick;

constexpr const char* kHelp =
    "Tarnwick updates the firmware of computerised telescope mounts. It opens a window and takes no words "
    "but\n"
    "--help and --version. Without a display, tarnwick-flash does the same work in a terminal.\n";

int TellNoDisplay() {
  std::fputs(
      "Tarnwick: there is no display to open a window on; tarnwick-flash does the same in a terminal.\n",
      stderr);
  return 1;
}

/// Whether program and library, as they lie here, can run on this computer.
bool RunsHere() {
  return !files::FileExists(LinkLibraryFile()) || Link().getDllVersion() != std::array<std::int32_t, 3>{};
}

/// What the toolkit ends the process for, which is a display that cannot be used.
void TellFatal(QtMsgType type, const QMessageLogContext&, const QString& text) {
  std::fprintf(stderr, "%s\n", qPrintable(text));
  if (type != QtFatalMsg) return;
  TellUnseen();
  std::_Exit(TellNoDisplay());
}

int RunWindow(int argc, char* argv[], const Beginning& beginning) {
  const QtMessageHandler usual = qInstallMessageHandler(TellFatal);
  QApplication application(argc, argv);
  qInstallMessageHandler(usual);
  App app(application);
  if (const std::string why = WhyNoStart(beginning); !why.empty()) {
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
  const auto words = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (words.size() == 1 && words.front() == kTrial) return RunsHere() ? 0 : 1;
  if (const auto answered = cli::AnswerCommonWords(words, "Tarnwick", kHelp)) return *answered;
  // Words with one dash belong to the toolkit, and to the desktop that starts it.
  const std::string_view first = words.empty() ? std::string_view("-") : words.front();
  if (!first.starts_with('-') || first.starts_with("--")) {
    std::fprintf(stderr, "Tarnwick: it takes no word but --help and --version.\n");
    return 2;
  }
  if (!program::HasDisplay()) return TellNoDisplay();
  // Before anything of this program and its link library can be mixed.
  App::TrustBuiltInKey();
  record::Open(program::This().folder);
  const Beginning beginning = BeginProgram(TryProgram);
  return beginning.what == Beginning::What::End ? beginning.status : RunWindow(argc, argv, beginning);
}
