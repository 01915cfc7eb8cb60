// What a long catalogue costs: read, merged with a folder as full as it is long, sorted, and shown. Every
// other package of the folder is on the site as well; the others have notes.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QEvent>
#include <QTableView>
#include <map>

#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/frmWebUpdate.h"

namespace tarnwick::bench {
namespace {

std::string NameOf(std::int64_t number) {
  // A scattered order, as a site's own may be.
  return "MC_" + std::to_string(number * 7919 % 100'003) + "_" + std::to_string(number);
}

/// A site and a folder of `count` packages each.
struct Stock {
  explicit Stock(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
      catalogue +=
          "@" + NameOf(i) + ".qal,2024-03-05,5967\r\nMotor control\r\nWith a few\r\nlines of notes\r\n";
      test::WriteFile(folder / (NameOf(2 * i) + ".qal"), "x");
      if (2 * i >= count) test::WriteFile(folder / (NameOf(2 * i) + ".txt"), "Motor control\r\n");
    }
  }
  test::TempFolder folder;
  std::string catalogue;
};

const Stock& StockOf(std::int64_t count) {
  static std::map<std::int64_t, Stock> stocks;
  return stocks.try_emplace(count, count).first->second;
}

/// Tells that a widget has been painted.
class Painted final : public QObject {
 public:
  explicit Painted(QWidget& watched) { watched.installEventFilter(this); }
  bool done = false;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    done = done || event->type() == QEvent::Paint;
    return false;
  }
};

void Listed(benchmark::State& state) {
  const Stock& stock = StockOf(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    Catalogue catalogue;
    catalogue.Load(stock.catalogue, 0);
    catalogue.MergeLocalFiles(stock.folder.Path());
    catalogue.SortFiles();
    if (catalogue.FileCount() != state.range(0) * 3 / 2) state.SkipWithError("wrong list");
  }
}

void Show(benchmark::State& state, const std::string& catalogue) {
  test::HttpDouble site;
  test::UserDouble user;
  user.onPump = [] { QCoreApplication::processEvents(); };
  site.replies[DomainPath + DomainDir] = {catalogue};
  for ([[maybe_unused]] auto _ : state) {
    frmWebUpdate window(nullptr);
    window.Form_Load();
    window.show();
    const Painted painted(*window.findChild<QTableView*>()->viewport());
    while (!painted.done) QCoreApplication::processEvents();
    if (!user.boxes.empty()) state.SkipWithError(user.LastBox().c_str());
  }
}

void Shown(benchmark::State& state) {
  const Stock& stock = StockOf(state.range(0));
  gFirmwareDir = stock.folder.Path();
  Show(state, stock.catalogue);
}

/// The most packages that are shown, with nothing in the folder.
void ShownMost(benchmark::State& state) {
  std::string catalogue;
  for (std::int32_t i = 0; i < Catalogue::kMostEntries; ++i)
    catalogue += "@" + NameOf(i) + ".qal,2024-03-05,5967\r\nMotor control\r\n";
  const test::TempFolder folder;
  gFirmwareDir = folder.Path();
  Show(state, catalogue);
}

BENCHMARK(ShownMost)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Listed)->Arg(100)->Arg(1000)->Arg(10'000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Shown)->Arg(100)->Arg(10'000)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarnwick::bench

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
