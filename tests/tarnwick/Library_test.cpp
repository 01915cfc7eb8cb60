// The library's core against the simulated mount's core, on virtual time.
#include "tarnwick/Library.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "support/VirtualLine.h"

namespace tarnwick::wire {
namespace {

using mount::LinkSetup;
using std::chrono::milliseconds;

struct Bench {
  explicit Bench(const LinkSetup& link = {}) : mount(link) {
    for (const auto address : {std::uint8_t{16}, std::uint8_t{17}}) mount.Put(address, {});
  }
  mount::Memory& Words() { return mount.Devices().at(16).Words(); }
  std::int32_t State(std::int32_t address) {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    return library.GetState(address, &major, &minor);
  }
  std::int32_t Word(std::int32_t place) {
    std::int32_t word = -1;
    return library.ReadMemory(16, place, place, &word) == 1 ? word : -1;
  }
  template <class Action>
  Duration Took(Action&& action) {
    const Duration before = line.Now();
    action();
    return line.Now() - before;
  }

  mount::Mount mount;
  test::VirtualLine line{mount};
  const test::TempFolder folder;
  Library library{line, line, folder / "trace.txt"};
};

TEST(Library, TellsWhyNoTelescopeIsThere) {
  using Damage = mount::Line::Damage;
  const auto answerWith = [](const Bytes& bytes) {
    return [bytes](Bytes& out) { out = out.empty() ? out : bytes; };
  };
  const auto frame = [](Kind kind, Bytes payload) {
    return [kind, payload](Bytes& out) {
      if (!out.empty()) out = Encode({kind, Command::Identify, out[1], 0, payload});
    };
  };
  int answers = 0;
  const std::vector<std::pair<std::int32_t, Damage>> cases = {
      {-2, [](Bytes& out) { out.clear(); }},
      {-3, answerWith({'O', 'K', 0xFF})},
      {-4, frame(Kind::Request, {})},
      {-5, answerWith(Encode({Kind::Done, Command::Enter, 1, 16, {}}))},
      {-5, frame(Kind::Done, {'X', 'W', 1, 0, 0, 0})},
      {-6, frame(Kind::Done, {'T', 'W', 2, 0, 0, 0})},
      {-8, [&](Bytes& out) { answers += out.empty() || answers > 0 ? out.clear(), 0 : 1; }}};
  for (const auto& [result, damage] : cases) {
    Bench bench;
    bench.line.line.toLibrary = damage;
    EXPECT_LE(bench.Took([&, expected = result] { EXPECT_EQ(bench.library.InitSerial("COM5"), expected); }),
              kOpenLimit)
        << result;
    EXPECT_EQ(bench.library.SerialMode(), 0);
  }
  Bench bench({LinkKind::VirtualPort, true});
  EXPECT_EQ(bench.library.InitSerial("COM6"), -1);
  bench.line.hungUp = true;
  EXPECT_EQ(bench.library.InitSerial("COM5"), -7);
  bench.line.hungUp = false;
  for (auto& [address, device] : bench.mount.Devices()) device.State(mount::RunState::Silent);
  EXPECT_EQ(bench.library.InitSerial("COM5"), 0);
  EXPECT_EQ(bench.State(16) + bench.library.TestForVirtualPort() + bench.library.TestForUpgradeSupport(), 0);
}

TEST(Library, GivesTheFailureResultOnBadArgumentsAndWithoutAPort) {
  Bench bench;
  Library& library = bench.library;
  std::int32_t out = 77;
  const std::int32_t packet[10] = {}, wrongByte[4] = {0, 0, 256, 0}, atTheEnd[6] = {0xFF, 0xFF, 0, 0, 0, 0};
  for (const bool open : {false, true}) {
    EXPECT_EQ(library.InitSerial(open ? "COM5" : ""), 0);
    for (const std::int32_t address : {-1, 0, 256, 0x10010, open ? 300 : 16}) {
      EXPECT_EQ(library.GetState(address, &out, &out) + library.ReadMemory(address, 0, 0, &out), 0);
      EXPECT_EQ(library.GetBootVersion(address, &out), -1);
      EXPECT_EQ(library.EnterBoot(address) + library.SendData(address, 4, packet), 0);
    }
    for (const auto& [first, last] : {std::pair(1, 0), std::pair(-1, 0), std::pair(0xFFFF, 0x10000)})
      EXPECT_EQ(library.ReadMemory(16, first, last, &out), 0);
    for (const std::int32_t count : {-1, 0, 5, 12}) EXPECT_EQ(library.SendData(16, count, packet), 0);
    EXPECT_EQ(library.SendData(16, 4, wrongByte) + library.SendData(16, 6, atTheEnd), 0);
    EXPECT_EQ(out, 77);
  }
}

TEST(Library, TakesTheFastestSpeedThatTheLineBears) {
  struct Case {
    int mount, bears, wanted;
    milliseconds latency;
  };
  for (const Case& c : std::vector<Case>{{115200, 115200, 115200, milliseconds(0)},
                                         {115200, 115200, 115200, milliseconds(200)},
                                         {57600, 115200, 57600, milliseconds(16)},
                                         {9600, 115200, 9600, milliseconds(0)},
                                         {115200, 57600, 57600, milliseconds(16)},
                                         {115200, 19200, 19200, milliseconds(100)},
                                         {115200, 9600, 9600, milliseconds(16)}}) {
    Bench bench({LinkKind::Direct, true, c.mount});
    bench.line.line.setup = {true, c.latency, 0, c.bears};
    for (const char* round : {"first", "left at that speed by a killed program"}) {
      EXPECT_LE(bench.Took([&] { EXPECT_EQ(bench.library.InitSerial("COM5"), 0) << round; }), kOpenLimit);
      EXPECT_EQ(bench.library.Speed(), c.wanted) << round;
      EXPECT_EQ(bench.mount.Speed(), c.wanted);
      EXPECT_EQ(bench.State(16), 1);
    }
  }
}

TEST(Library, FindsItsWayBackAfterAPowerCycleWithinTheCall) {
  for (const milliseconds latency : {milliseconds(0), milliseconds(200)}) {
    Bench bench({LinkKind::HandControl, false});
    bench.line.line.setup = {true, latency};
    ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
    EXPECT_EQ(bench.library.SerialMode(), 2);
    EXPECT_EQ(bench.library.TestForVirtualPort() * 10 + bench.library.TestForUpgradeSupport(), 11);
    EXPECT_EQ(bench.library.EnterBoot(16), 0);
    bench.library.LockHandControl();
    for (int i = 0; i < 2; ++i) {
      bench.mount.PowerCycle();
      EXPECT_LE(bench.Took([&] { EXPECT_EQ(bench.library.EnterBoot(16), 1); }), kAskLimit);
      EXPECT_EQ(bench.library.Speed(), latency < milliseconds(100) ? 115200 : bench.mount.Speed());
    }
    bench.line.line.toMount = [](Bytes& bytes) { bytes.clear(); };
    EXPECT_LE(bench.Took([&] { EXPECT_EQ(bench.State(16), 0); }), kAskLimit);
    bench.mount.PowerCycle();
    bench.line.line.toMount = nullptr;
    EXPECT_EQ(bench.State(16), 1);
  }
}

TEST(Library, HoldsTheDeviceAgainstWhatItWasSentSinceStartAlone) {
  Bench bench;
  const std::int32_t last[4] = {1, 0, 0x34, 0x12}, first[4] = {0, 0, 0x78, 0x16};
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  EXPECT_EQ(bench.library.EnterBoot(16) + bench.library.StartProgramming(16), 2);
  EXPECT_EQ(bench.library.SendData(16, 4, last), 1);
  bench.mount.PowerCycle();
  EXPECT_EQ(bench.State(16), 2);
  bench.line.line.toLibrary = [](Bytes& bytes) { bytes.clear(); };
  EXPECT_EQ(bench.library.StartProgramming(16), 0);  // It did start; only its answers were lost.
  bench.line.line.toLibrary = nullptr;
  EXPECT_EQ(bench.State(16), 3);
  EXPECT_EQ(bench.library.SendData(16, 4, first), 1);
  EXPECT_EQ(bench.library.EndProgramming(16), 1);
}

TEST(Library, ReadsAheadWhatNothingCanHaveChanged) {
  Bench bench;
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  std::vector<std::int32_t> words(200);
  ASSERT_EQ(bench.library.ReadMemory(16, 4, 203, words.data()), 1);
  int requests = 0;
  bench.line.line.toMount = [&](Bytes& bytes) { requests += bytes.empty() ? 0 : 1; };
  for (std::int32_t i = 0; i < 200; ++i) EXPECT_EQ(bench.Word(4 + i), words[static_cast<std::size_t>(i)]);
  EXPECT_EQ(requests, 5);
  const auto change = [&](std::uint32_t index) { bench.Words().ImageWord(index, 0x0ABC); };
  change(204);
  EXPECT_NE(bench.Word(204), 0x0ABC);
  change(205);
  bench.line.now += milliseconds(1000);
  EXPECT_EQ(bench.Word(205), 0x0ABC);
  change(206);
  bench.State(17);
  EXPECT_EQ(bench.Word(206), 0x0ABC);
  requests = 0;
  for (const std::int32_t place : {0x3FFE, 0x3FFF, 0xFFFC, 0xFFFD, 0xFFFE, 0xFFFF})
    EXPECT_GE(bench.Word(place), 0);
  EXPECT_EQ(bench.Word(0x4000), -1);
  EXPECT_EQ(requests, 5);
  bench.line.line.toLibrary = [](Bytes& bytes) { bytes.resize(std::min<std::size_t>(bytes.size(), 20)); };
  EXPECT_LE(bench.Took([&] { EXPECT_GE(bench.Word(0) + bench.Word(1), 0); }), kAskLimit);
  EXPECT_LE(bench.Took([&] { EXPECT_GE(bench.Word(2), 0); }), milliseconds(1));
}

TEST(Library, TracesToABoundedFile) {
  Bench bench;
  const auto traced = [&] { return test::ReadFile(bench.folder / "trace.txt"); };
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  EXPECT_FALSE(std::filesystem::exists(bench.folder / "trace.txt"));
  bench.library.DebugFilter(1, Trace::kFrames);
  bench.State(16);
  EXPECT_NE(traced().find(" State device 16 done: 01 04 02\n"), std::string::npos);
  EXPECT_EQ(traced().find("port"), std::string::npos);
  bench.library.DebugFilter(1, Trace::kPort);
  bench.library.InitSerial("COM5");
  EXPECT_NE(traced().find("port  speed 115200\n"), std::string::npos);
  std::string old;
  while (old.size() < Trace::kMostBytes) old += "an older line\n";
  test::WriteFile(bench.folder / "trace.txt", old);
  bench.State(17);
  EXPECT_LT(traced().size(), Trace::kMostBytes * 2 / 3);
  EXPECT_TRUE(traced().starts_with("an older line\n"));
  EXPECT_NE(traced().find("State device 17 done"), std::string::npos);
}

}  // namespace
}  // namespace tarnwick::wire
