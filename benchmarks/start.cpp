// Whole processes from their start to the first picture of their window, and the one without a window to its
// end.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

namespace {

void Start(benchmark::State& state, const char* program) {
  QTemporaryDir folder;
  const QString file = QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(program);
  double peak = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    QElapsedTimer elapsed;
    elapsed.start();
    process.start(file, {});
    const bool ended = process.waitForFinished();
    state.SetIterationTime(static_cast<double>(elapsed.nsecsElapsed()) * 1e-9);
    peak = process.readAllStandardOutput().trimmed().toDouble();
    if (!ended || peak <= 0.0) return state.SkipWithError("the window was not painted");
  }
  state.counters["peak"] = peak;
}

/// `tarnwick-flash ports`, from its start to its end: it shows all ports, with the settings read.
void Flash(benchmark::State& state) {
  std::string file = QCoreApplication::applicationDirPath().toStdString() + "/../portable/tarnwick-flash";
  std::string word = "ports";
  char* const words[] = {file.data(), word.data(), nullptr};
  posix_spawn_file_actions_t quiet;
  posix_spawn_file_actions_init(&quiet);
  posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", 1, 0);
  for ([[maybe_unused]] auto _ : state) {
    QElapsedTimer elapsed;
    elapsed.start();
    pid_t process = 0;
    int status = -1;
    rusage usage{};
    if (posix_spawn(&process, file.c_str(), &quiet, nullptr, words, environ) == 0) {
      wait4(process, &status, 0, &usage);
    }
    state.SetIterationTime(static_cast<double>(elapsed.nsecsElapsed()) * 1e-9);
    if (status != 0) return state.SkipWithError("tarnwick-flash failed");
    state.counters["peak"] = static_cast<double>(usage.ru_maxrss);  // In kB, as the windows tell theirs.
  }
  posix_spawn_file_actions_destroy(&quiet);
}

}  // namespace

int main(int argc, char* argv[]) {
  QCoreApplication application(argc, argv);
  for (const char* const program : {"bench-bare-window", "bench-first-page"}) {
    benchmark::RegisterBenchmark(program, Start, program)->Iterations(1)->UseManualTime();
  }
  benchmark::RegisterBenchmark("tarnwick-flash", Flash)->Iterations(1)->UseManualTime();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
