// Whole processes from their start to the first picture of their window.
#include <benchmark/benchmark.h>

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

}  // namespace

int main(int argc, char* argv[]) {
  QCoreApplication application(argc, argv);
  for (const char* const program : {"bench-bare-window", "bench-first-page"}) {
    benchmark::RegisterBenchmark(program, Start, program)->Iterations(1)->UseManualTime();
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
