// What the link library makes of the line: its calls against the simulated mount's process on a pseudo
// terminal that is paced truly, held against a bare loop of write, poll and read with the same bytes, and
// against the time that they take on the line.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "linklib/LinkCore.h"
#include "linklib/Surroundings.h"
#include "mount/MountProcess.h"
#include "support/TempFolder.h"

namespace tarnwick::bench {
namespace {

constexpr std::int32_t kMotor = 16;
/// Bytes of frame around a payload, request and answer together.
constexpr int kFrames = 2 * (wire::kHeaderLength + wire::kCrcLength);

/// One request as it was sent, and how many bytes came back.
struct Exchange {
  wire::Bytes sent;
  std::size_t answered = 0;
};

/// Opens ports and keeps what goes over them, as long as that is wanted.
class Recorder : public wire::IPortOpener {
 public:
  explicit Recorder(wire::IPortOpener& opener) : mOpener(opener) {}
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override {
    std::unique_ptr<serial::ILine> line = mOpener.Open(name, error);
    return line ? std::make_unique<Line>(std::move(line), *this) : nullptr;
  }
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override {
    return mOpener.OpenAgain(error);
  }

  bool wanted = false;
  std::vector<Exchange> kept;

 private:
  struct Line : serial::ILine {
    Line(std::unique_ptr<serial::ILine> line, Recorder& recorder)
        : mLine(std::move(line)), mKeeper(recorder) {}
    std::error_code Speed(int speed) override { return mLine->Speed(speed); }
    std::error_code Write(std::span<const std::uint8_t> bytes, serial::Duration limit) override {
      if (mKeeper.wanted) mKeeper.kept.push_back({{bytes.begin(), bytes.end()}, 0});
      return mLine->Write(bytes, limit);
    }
    std::size_t Read(std::span<std::uint8_t> buffer, serial::Duration limit,
                     std::error_code& error) override {
      const std::size_t count = mLine->Read(buffer, limit, error);
      if (mKeeper.wanted && !mKeeper.kept.empty()) mKeeper.kept.back().answered += count;
      return count;
    }
    std::unique_ptr<serial::ILine> mLine;
    Recorder& mKeeper;
  };

  wire::IPortOpener& mOpener;
};

/// The mount at the end of a line of some speed, and the library with its port open. Motor 16 is in program
/// state, motor 17 running.
class Bench {
 public:
  Bench(int speed, bool paced, bool first = false) : mOpener(mFolder.Path()), recorder(mOpener) {
    mMount.Start(TARNWICK_MOUNT, mFolder / "ports/COM5",
                 {"--revision", "5", "--baud", std::to_string(speed)});
    mMount.Ask(paced ? "line paced=on" : "line paced=off");
    mMount.Ask(first ? "first on" : "first off");
    mBare = ::open(mMount.Device().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    mReady = core.InitSerial("COM5") == 0 && core.Speed() == speed && core.EnterBoot(kMotor) == 1 &&
             core.StartProgramming(kMotor) == 1;
  }
  ~Bench() { ::close(mBare); }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;
  bool Ready() const { return mReady; }
  /// The terminal, open beside the library for who speaks by itself, at the library's settings.
  int Bare() const { return mBare; }
  double Now() { return std::chrono::duration<double>(mClock.Now()).count(); }

 private:
  test::TempFolder mFolder;
  mount::MountProcess mMount;
  wire::PortOpener mOpener;
  wire::SteadyClock mClock;
  bool mReady = false;
  int mBare = -1;

 public:
  Recorder recorder;
  wire::LinkCore core{recorder, mClock};
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

double Median(std::vector<double>& times) {
  if (times.empty()) return -1;
  std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
  return times[times.size() / 2];
}

/// Writes the blocks from word `first` to before `end`, and adds the time of each to `times`. False when one
/// failed.
bool WriteBlocks(Bench& bench, std::int32_t first, std::int32_t end, std::int32_t block,
                 std::vector<double>& times) {
  for (; first < end; first += block) {
    const std::int32_t packet[10] = {first / 256, first % 256, 1, 2, 3, 4, 5, 6, 7, 8};
    const double before = bench.Now();
    if (bench.core.SendData(kMotor, 2 * block + 2, packet) != 1) return false;
    times.push_back(bench.Now() - before);
  }
  return true;
}

/// One request and its answer, of which no more is known than how long it is.
bool ExchangeBare(int fd, const Exchange& exchange) {
  std::array<char, 256> buffer{};
  if (::write(fd, exchange.sent.data(), exchange.sent.size()) < 0) return false;
  for (std::size_t got = 0; got < exchange.answered;) {
    pollfd line{fd, POLLIN, 0};
    if (::poll(&line, 1, 1000) <= 0) return false;
    got += static_cast<std::size_t>(std::max<ssize_t>(::read(fd, buffer.data(), buffer.size()), 0));
  }
  return true;
}

/// Sends all that was kept once more, and adds the time of each to `times`. The first block is a whole frame
/// this time, since it follows on none. False when an answer did not come.
bool RepeatBare(Bench& bench, const wire::Frame& first, std::vector<double>& times) {
  std::vector<Exchange> kept;
  kept.swap(bench.recorder.kept);
  kept.front() = {wire::Encode(first), wire::AnswerLength(first)};
  for (const Exchange& exchange : kept) {
    const double before = bench.Now();
    if (!ExchangeBare(bench.Bare(), exchange)) return false;
    times.push_back(bench.Now() - before);
  }
  return true;
}

/// The block at word `first` as `WriteBlocks` writes it, in a whole frame.
wire::Frame WholeBlock(std::uint8_t number, std::int32_t first, std::int32_t block) {
  wire::Bytes payload = {static_cast<std::uint8_t>(first / 256), static_cast<std::uint8_t>(first % 256)};
  for (std::int32_t i = 1; i <= 2 * block; ++i) payload.push_back(static_cast<std::uint8_t>(i));
  const wire::Command command = block == 1 ? wire::Command::Write1 : wire::Command::Write2;
  return {wire::Kind::Request, command, number, kMotor, std::move(payload)};
}

/// A whole image in blocks: by the library and, slice by slice in turn, by a bare loop with the same bytes.
void Program(benchmark::State& state) {
  constexpr std::int32_t kSlices = 16;
  const auto speed = static_cast<int>(state.range(0));
  const auto words = static_cast<std::int32_t>(state.range(1));
  const auto block = static_cast<std::int32_t>(state.range(2));
  Bench bench(speed, true);
  if (!bench.Ready()) return state.SkipWithError("the mount was not found at that speed");
  for ([[maybe_unused]] auto _ : state) {
    std::vector<double> library, bare;
    Exchange last;
    std::int32_t number = 0;
    for (std::int32_t at = 0; at < words; at += words / kSlices) {
      bench.recorder.wanted = true;
      if (!WriteBlocks(bench, at, at + words / kSlices, block, library)) break;
      bench.recorder.wanted = false;
      last = bench.recorder.kept.back();
      if (at == 0) number = bench.recorder.kept.front().sent[1];
      if (!RepeatBare(bench, WholeBlock(static_cast<std::uint8_t>(number + at / block), at, block), bare))
        break;
    }
    if (bare.size() != static_cast<std::size_t>(words / block)) return state.SkipWithError("a block failed");
    const double taken = Median(library);
    const double byte = static_cast<double>(wire::kBitsPerByte) / speed;
    state.SetIterationTime(taken);
    state.counters["bare"] = Median(bare) / taken;
    state.counters["line"] = byte * static_cast<double>(last.sent.size() + last.answered) / taken;
    state.counters["payload"] = byte * 2 * block / taken;
  }
}

/// How many times as fast as the frames of the protocol's first version, in turn with them.
void FirstVersion(benchmark::State& state) {
  constexpr std::int32_t kSlice = 100;
  Bench now(wire::kBaseSpeed, true);
  Bench then(wire::kBaseSpeed, true, true);
  if (!now.Ready() || !then.Ready()) return state.SkipWithError("the mount was not found");
  for ([[maybe_unused]] auto _ : state) {
    std::vector<double> before, after;
    for (std::int32_t at = 0; at < 10 * kSlice; at += kSlice)
      if (!WriteBlocks(then, at, at + kSlice, 1, before) || !WriteBlocks(now, at, at + kSlice, 1, after))
        return state.SkipWithError("a block failed");
    state.SetIterationTime(Median(after));
    state.counters["times"] = Median(before) / Median(after);
  }
}

/// Seconds to open a mount that was closed in order.
void Reopen(benchmark::State& state) {
  Bench bench(static_cast<int>(state.range(0)), true);
  if (!bench.Ready()) return state.SkipWithError("the mount was not found");
  for ([[maybe_unused]] auto _ : state) {
    bench.core.InitSerial("");
    const double start = bench.Now();
    if (bench.core.InitSerial("COM5") != 0) return state.SkipWithError("the port was not opened");
    state.SetIterationTime(bench.Now() - start);
  }
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
  const Exchange state = {wire::Encode({wire::Kind::Request, wire::Command::State, 1, kMotor + 1, {}}), 8};
  const double start = bench.Now();
  for (int i = 0; i < count; ++i)
    if (!ExchangeBare(bench.Bare(), state)) break;
  return count / (bench.Now() - start);
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
      if (bench.core.GetState(kMotor + 1, &major, &minor) != 1) return state.SkipWithError("a call failed");
    const double taken = bench.Now() - start;
    const double bare = BareRate(bench, kRequests);
    state.SetIterationTime(taken / kRequests);
    state.counters["share"] = kRequests / taken / bare;
  }
}

BENCHMARK(Program)->UseManualTime()->Iterations(1)->ArgsProduct({{19200}, {2016}, {1, 2}});
BENCHMARK(Program)->UseManualTime()->Iterations(1)->ArgsProduct({{115200, 921600}, {16128}, {1, 2}});
BENCHMARK(FirstVersion)->UseManualTime()->Iterations(1);
BENCHMARK(Reopen)->UseManualTime()->Iterations(5)->Arg(19200)->Arg(115200);
BENCHMARK(Read)->UseManualTime()->Iterations(1)->ArgsProduct({{9600, 19200, 57600, 115200}});
BENCHMARK(Words)->UseManualTime()->Iterations(1)->Arg(19200);
BENCHMARK(Unpaced)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace tarnwick::bench

BENCHMARK_MAIN();
