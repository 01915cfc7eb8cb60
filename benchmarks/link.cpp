// What the link library makes of the line: its calls against the simulated mount's process on a pseudo
// terminal that is paced truly, held against the time that the protocol's frames take on the line; and the
// same without pacing, held against a bare loop of write, poll and read.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "mount/MountProcess.h"
#include "support/TempFolder.h"
#include "linklib/LinkCore.h"
#include "linklib/Surroundings.h"

namespace tarnwick::bench {
namespace {

constexpr std::int32_t kMotor = 16;
/// Bytes of frame around a payload, request and answer together.
constexpr int kFrames = 2 * (wire::kHeaderLength + wire::kCrcLength);

/// The mount at the end of a line of some speed, and the library with its port open. Motor 16 is in program
/// state, motor 17 running.
class Bench {
 public:
  Bench(int speed, bool paced) : mOpener(mFolder.Path()), core(mOpener, mClock) {
    mMount.Start(TARNWICK_MOUNT, mFolder / "ports/COM5",
                 {"--revision", "5", "--baud", std::to_string(speed)});
    mMount.Ask(paced ? "line paced=on" : "line paced=off");
    mReady = core.InitSerial("COM5") == 0 && core.Speed() == speed && core.EnterBoot(kMotor) == 1 &&
             core.StartProgramming(kMotor) == 1;
  }
  bool Ready() const { return mReady; }
  std::string Device() const { return mMount.Device(); }
  double Now() { return std::chrono::duration<double>(mClock.Now()).count(); }

 private:
  test::TempFolder mFolder;
  mount::MountProcess mMount;
  wire::PortOpener mOpener;
  wire::SteadyClock mClock;
  bool mReady = false;

 public:
  wire::LinkCore core;
};

/// One iteration for as many calls as fill about a second at `speed`; each moves `bytes` over the line.
/// Tells the line's own time as a share of the time taken, over all calls and for the median call, which
/// what else runs on the machine does not touch.
template <class Call>
void Share(benchmark::State& state, int speed, int bytes, Call&& call) {
  Bench bench(speed, true);
  if (!bench.Ready()) return state.SkipWithError("the mount was not found at that speed");
  const int calls = speed / wire::kBitsPerByte / bytes;
  const double limit = static_cast<double>(calls) * bytes * wire::kBitsPerByte / speed;
  for ([[maybe_unused]] auto _ : state) {
    const double start = bench.Now();
    std::vector<double> times;
    for (int i = 0; i < calls; ++i) {
      const double before = bench.Now();
      if (!call(bench.core, i)) return state.SkipWithError("a call failed");
      times.push_back(bench.Now() - before);
    }
    const double taken = bench.Now() - start;
    std::ranges::nth_element(times, times.begin() + calls / 2);
    state.SetIterationTime(taken / calls);
    state.counters["share"] = limit / taken;
    state.counters["median"] = limit / calls / times[static_cast<std::size_t>(calls / 2)];
    state.counters["bytes"] = bytes;
  }
}

void Program(benchmark::State& state) {
  const auto words = static_cast<std::int32_t>(state.range(1));
  Share(state, static_cast<int>(state.range(0)), kFrames + 2 + 2 * words, [&](wire::LinkCore& core, int i) {
    const std::int32_t first = i * words % 0x4000;
    const std::int32_t packet[10] = {first / 256, first % 256, 1, 2, 3, 4, 5, 6, 7, 8};
    return core.SendData(kMotor, 2 * words + 2, packet) == 1;
  });
}

void Read(benchmark::State& state) {
  constexpr auto kWords = static_cast<std::int32_t>(wire::kMostWords);
  Share(state, static_cast<int>(state.range(0)), kFrames + 4 + 2 * kWords, [](wire::LinkCore& core, int) {
    std::int32_t words[kWords];
    return core.ReadMemory(kMotor + 1, 0, kWords - 1, words) == 1;
  });
}

/// Seconds for each word of 1024, read one by one in this direction; negative when a read failed.
double WordByWord(Bench& bench, std::int32_t first, std::int32_t step, int count) {
  const double start = bench.Now();
  for (int i = 0; i < count; ++i) {
    std::int32_t word = 0;
    if (bench.core.ReadMemory(kMotor + 1, first + i * step, first + i * step, &word) != 1) return -1;
  }
  return (bench.Now() - start) / count;
}

/// Backwards no run forms, so each word takes an exchange of its own.
void Words(benchmark::State& state) {
  const auto speed = static_cast<int>(state.range(0));
  Bench bench(speed, true);
  if (!bench.Ready()) return state.SkipWithError("the mount was not found at that speed");
  for ([[maybe_unused]] auto _ : state) {
    const double ahead = WordByWord(bench, 0, 1, 1024);
    const double alone = WordByWord(bench, 512, -1, 128);
    if (ahead < 0 || alone < 0) return state.SkipWithError("a read failed");
    state.SetIterationTime(ahead);
    state.counters["times"] = alone / ahead;
    state.counters["share"] = 2.0 * wire::kBitsPerByte / speed / ahead;
  }
}

/// Requests a second of a loop that knows nothing but how long an answer is.
double BareRate(Bench& bench, int count) {
  const wire::Bytes request = wire::Encode({wire::Kind::Request, wire::Command::State, 1, kMotor + 1, {}});
  const int fd = ::open(bench.Device().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  std::array<char, 256> buffer{};
  const double start = bench.Now();
  for (int i = 0; i < count; ++i) {
    if (::write(fd, request.data(), request.size()) < 0) break;
    for (ssize_t got = 0; got < 8;) {
      pollfd line{fd, POLLIN, 0};
      if (::poll(&line, 1, 1000) <= 0) break;
      got += std::max<ssize_t>(::read(fd, buffer.data(), buffer.size()), 0);
    }
  }
  const double rate = count / (bench.Now() - start);
  ::close(fd);
  return rate;
}

void Unpaced(benchmark::State& state) {
  constexpr int kRequests = 2000;
  Bench bench(wire::kBaseSpeed, false);  // the speed that the bare loop finds too
  if (!bench.Ready()) return state.SkipWithError("the mount was not found");
  for ([[maybe_unused]] auto _ : state) {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    if (bench.core.InitSerial("COM5") != 0) return state.SkipWithError("the port was not opened");
    const double start = bench.Now();
    for (int i = 0; i < kRequests; ++i)
      if (bench.core.GetState(kMotor + 1, &major, &minor) != 1)
        return state.SkipWithError("a call failed");
    const double taken = bench.Now() - start;
    bench.core.InitSerial("");
    const double bare = BareRate(bench, kRequests);
    state.SetIterationTime(taken / kRequests);
    state.counters["share"] = kRequests / taken / bare;
  }
}

BENCHMARK(Program)->UseManualTime()->Iterations(1)->ArgsProduct({{9600, 19200, 57600, 115200}, {1, 2, 4}});
BENCHMARK(Read)->UseManualTime()->Iterations(1)->ArgsProduct({{9600, 19200, 57600, 115200}});
BENCHMARK(Words)->UseManualTime()->Iterations(1)->Arg(19200);
BENCHMARK(Unpaced)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace tarnwick::bench

BENCHMARK_MAIN();
