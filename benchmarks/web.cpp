// What the web costs: a file fetched by the client, with a window that shows its progress after each
// piece, held against a whole curl process that fetches the same from the same server; a package from the
// click to its file; and how long a window goes without painting, in a download and while the server stalls.
#include <benchmark/benchmark.h>
#include <spawn.h>

#include <QApplication>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <thread>

#include "NginxProcess.h"
#include "platform/http/CurlTransport.h"
#include "platform/ui.h"
#include "settings/Settings.h"
#include "support/Loopback.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/frmWebUpdate.h"
#include "widgets/ProgressBar.h"

namespace tarnwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Repaints itself without end, and knows the longest time that it had to wait for that.
class Restless final : public QWidget {
 public:
  using QWidget::QWidget;
  void Start() {
    mLast = Clock::now();
    longest = 0.0;
    update();
  }
  void Look() { longest = std::max(longest, Since(mLast)); }
  double longest = 0.0;

 protected:
  void paintEvent(QPaintEvent*) override {
    Look();
    mLast = Clock::now();
    QTimer::singleShot(1, this, [this] { update(); });
  }

 private:
  Clock::time_point mLast;
};

/// Sees the window painted while a transfer waits.
struct Viewer final : test::UserDouble {
  void PumpPainting() override { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }
};

/// A server with the files, the user at a window, and the client.
class Desk {
 public:
  Desk() : mNginx(TARNWICK_NGINX), mBar(&mWindow), restless(&mWindow) {
    mUser.onPump = [] { QCoreApplication::processEvents(); };
    gFirmwareDir = mPackages.Path();
    DomainName = "127.0.0.1";
    DomainPath.clear();
    DomainDir = "/list.txt";
    mWindow.resize(400, 80);
    mBar.setGeometry(0, 0, 400, 30);
    restless.setGeometry(0, 40, 20, 20);
    mWindow.show();
    ui::PumpEvents();
  }

  /// Seconds that the client takes; negative when it did not get the file. What came is in `answer`.
  double Fetch(std::uint16_t port, std::int64_t size) {
    std::string().swap(answer);
    test::AskByWayOf(port);
    const Clock::time_point start = Clock::now();
    HTTPClass client;
    client.Progress = [this, size](std::int32_t count) {
      const double fraction = static_cast<double>(count) / static_cast<double>(size);
      mBar.Label(QString::number(static_cast<int>(fraction * 100)) + QLatin1Char('%'));
      mBar.Bar(fraction);
      ui::PumpEvents();
    };
    std::string method = "GET";
    if (!client.OpenHTTP("127.0.0.1")) return -1;
    answer = client.SendRequest("/" + std::to_string(size), method, {}, true);
    return static_cast<std::int64_t>(answer.size()) == size ? Since(start) : -1;
  }

  /// The longest time without painting meanwhile; negative when the file did not come.
  double Unpainted(std::uint16_t port, std::int64_t size) {
    Serve(size);
    restless.Start();
    if (Fetch(port, size) < 0) return -1;
    restless.Look();
    return restless.longest;
  }

  /// Seconds of a fetch with the file on the disk, not flushed, as curl leaves it.
  double FetchToFile(std::int64_t size) {
    Serve(size);
    const std::filesystem::path target = mPackages / "client";
    std::filesystem::remove(target);
    const Clock::time_point start = Clock::now();
    if (Fetch(mNginx.port, size) < 0) return -1;
    test::WriteFile(target, answer);
    return Since(start);
  }

  /// Seconds of a curl process that saves the file.
  double Curl(std::int64_t size) {
    Serve(size);
    const std::filesystem::path target = mPackages / "curl";
    std::filesystem::remove(target);
    std::string url = "http://127.0.0.1:" + std::to_string(mNginx.port) + "/" + std::to_string(size);
    std::string program = "curl", silent = "-sf", proxy = "--noproxy", none = "*";
    std::string option = "-o", file = target.string();
    char* const arguments[] = {program.data(), silent.data(), proxy.data(), none.data(),
                               option.data(),  file.data(),   url.data(),   nullptr};
    const Clock::time_point start = Clock::now();
    pid_t process = -1;
    int status = -1;
    if (::posix_spawnp(&process, "curl", nullptr, nullptr, arguments, environ) != 0) return -1;
    ::waitpid(process, &status, 0);
    return status == 0 ? Since(start) : -1;
  }

  std::uint16_t Port() const { return mNginx.port; }

  /// Seconds from a click on Download in the program's own window to the package on the disk.
  double Click(std::int64_t size) {
    Serve(size);
    const std::filesystem::path package = mPackages / "p.qal";
    std::filesystem::remove(package);
    std::filesystem::copy_file(mNginx.site / std::to_string(size), mNginx.site / "p.qal",
                               std::filesystem::copy_options::overwrite_existing);
    test::WriteFile(mNginx.site / "list.txt", "@p.qal,2024-03-05," + std::to_string(size) + "\r\nNote\r\n");
    test::AskByWayOf(mNginx.port);
    frmWebUpdate window(nullptr);
    window.Form_Load();
    window.show();
    window.findChild<QTableView*>(QStringLiteral("Grid"))->selectRow(0);
    QCoreApplication::processEvents();
    const Clock::time_point start = Clock::now();
    window.findChild<QPushButton*>(QStringLiteral("cmdDownload"))->click();
    const double taken = Since(start);
    std::error_code error;
    return std::filesystem::file_size(package, error) == static_cast<std::uintmax_t>(size) ? taken : -1;
  }

 private:
  void Serve(std::int64_t size) {
    const auto path = mNginx.site / std::to_string(size);
    if (!std::filesystem::exists(path))
      test::WriteFile(path, std::string(static_cast<std::size_t>(size), 'x'));
  }

  Viewer mUser;  ///< A box would wait for ever.
  http::CurlTransport mTransport;
  NginxProcess mNginx;
  test::TempFolder mPackages;
  QWidget mWindow;
  ProgressBar mBar;

 public:
  Restless restless;
  std::string answer;
};

Desk* gDesk = nullptr;

/// Sends half of `size` bytes, and the other half three seconds later.
void Stall(const test::Listener& listener, std::int64_t size) {
  const int client = ::accept4(listener.Socket(), nullptr, nullptr, SOCK_CLOEXEC);
  const std::string half(static_cast<std::size_t>(size / 2), 'x');
  const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n" + half;
  ::send(client, head.data(), head.size(), MSG_NOSIGNAL);
  std::this_thread::sleep_for(std::chrono::seconds(3));
  ::send(client, half.data(), half.size(), MSG_NOSIGNAL);
  ::shutdown(client, SHUT_WR);
  char rest = 0;
  while (::recv(client, &rest, 1, 0) > 0) {
  }
  ::close(client);
}

/// One iteration of that many seconds.
template <class Action>
void Time(benchmark::State& state, Action&& action) {
  for ([[maybe_unused]] auto _ : state) {
    const double seconds = action();
    if (seconds < 0) return state.SkipWithError("the file did not come");
    state.SetIterationTime(seconds);
  }
}

void Curl(benchmark::State& state) {
  Time(state, [&] { return gDesk->Curl(state.range(0)); });
}
void Client(benchmark::State& state) {
  Time(state, [&] { return gDesk->FetchToFile(state.range(0)); });
}
void Click(benchmark::State& state) {
  Time(state, [&] { return gDesk->Click(state.range(0)); });
}

/// One iteration, for the longest time without painting; without a figure where that is negative.
void Tell(benchmark::State& state, double longest) {
  Time(state, [&] { return longest; });
  state.counters["longest"] = longest;
}

void Painting(benchmark::State& state) {
  double longest = 0.0;
  for (int i = 0; i < 5; ++i) longest = std::max(longest, gDesk->Unpainted(gDesk->Port(), state.range(0)));
  Tell(state, longest);
}

void PaintingStalled(benchmark::State& state) {
  const test::Listener listener;
  std::thread server([&] { Stall(listener, state.range(0)); });
  const double longest = gDesk->Unpainted(listener.Port(), state.range(0));
  server.join();
  Tell(state, longest);
}

BENCHMARK(Curl)->UseManualTime()->Iterations(1)->Arg(10 << 20)->Arg(60 << 20)->Arg(100'000);
BENCHMARK(Client)->UseManualTime()->Iterations(1)->Arg(10 << 20)->Arg(60 << 20);
BENCHMARK(Click)->UseManualTime()->Iterations(1)->Arg(100'000);
BENCHMARK(Painting)->UseManualTime()->Iterations(1)->Repetitions(1)->Arg(60 << 20);
BENCHMARK(PaintingStalled)->UseManualTime()->Iterations(1)->Repetitions(1)->Arg(1 << 20);

}  // namespace
}  // namespace tarnwick::bench

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  tarnwick::bench::Desk desk;
  tarnwick::bench::gDesk = &desk;
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
