// The library's core against the simulated mount's core, on virtual time.
#include "tarnwick/Library.h"

#include <gtest/gtest.h>

#include <random>

#include "support/VirtualLine.h"

namespace tarnwick::wire {
namespace {

using std::chrono::milliseconds;

struct Bench {
  explicit Bench(const mount::LinkSetup& link = {}) : mount(link) {
    for (const auto address : {std::uint8_t{16}, std::uint8_t{17}}) mount.Put(address, {});
  }
  mount::Device& Device(std::uint8_t address) { return mount.Devices().at(address); }
  std::int32_t State(std::int32_t address) {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    return library.GetState(address, &major, &minor);
  }
  /// Sends words from 0 on in blocks of two; true when all went well up to the end call.
  bool Program(const std::vector<std::uint16_t>& words) {
    for (std::size_t w = 0; w < words.size(); w += 2) {
      const std::int32_t packet[] = {static_cast<std::int32_t>(w / 256),
                                     static_cast<std::int32_t>(w % 256),
                                     words[w] & 0xFF,
                                     words[w] >> 8,
                                     words[w + 1] & 0xFF,
                                     words[w + 1] >> 8};
      if (library.SendData(16, 6, packet) == 0) return false;
    }
    return library.EndProgramming(16) != 0;
  }
  void ToProgramState() {
    ASSERT_EQ(library.InitSerial("COM5"), 0);
    ASSERT_EQ(library.EnterBoot(16), 1);
    ASSERT_EQ(library.StartProgramming(16), 1);
    ASSERT_EQ(State(16), 3);
  }
  bool Holds(const std::vector<std::uint16_t>& words) {
    for (std::uint32_t i = 0; i < words.size(); ++i)
      if (Device(16).Words().ImageWord(i) != words[i]) return false;
    return true;
  }

  mount::Mount mount;
  test::VirtualLine line{mount};
  Library library{line, line};
};

std::vector<std::uint16_t> Image(std::size_t words) {
  std::vector<std::uint16_t> image(words);
  std::mt19937 random(7);
  for (std::uint16_t& word : image) word = static_cast<std::uint16_t>(random() & 0x3FFF);
  return image;
}

TEST(Library, TellsWhyNoTelescopeIsThere) {
  const auto answerWith = [](const Bytes& bytes) {
    return [bytes](Bytes& out) {
      if (!out.empty()) out = bytes;
    };
  };
  const Bytes otherProtocol{'T', 'W', 2, 0, 0, 0};
  int answers = 0;
  struct Case {
    std::int32_t result;
    const char* port;
    std::function<void(test::VirtualLine&)> prepare;
  };
  const std::vector<Case> cases = {
      {0, "COM5", [](test::VirtualLine&) {}},
      {-1, "COM6", [](test::VirtualLine&) {}},
      {-2, "COM5", [](test::VirtualLine& line) { line.toLibrary = [](Bytes& out) { out.clear(); }; }},
      {-3, "COM5",
       [&](test::VirtualLine& line) {
         line.toLibrary = answerWith({'O', 'K', 0xFF});
       }},
      {-4, "COM5",
       [](test::VirtualLine& line) {
         line.toLibrary = [](Bytes& out) {
           Frame frame;
           std::size_t length = 0;
           if (ScanFrame(out, frame, length) != Scan::Whole) return;
           out = Encode({Kind::Request, frame.command, frame.sequence, frame.address, {}});
         };
       }},
      {-5, "COM5",
       [&](test::VirtualLine& line) {
         line.toLibrary = answerWith(Encode({Kind::Done, Command::Enter, 1, 16, {}}));
       }},
      {-6, "COM5",
       [&](test::VirtualLine& line) {
         line.toLibrary = [&](Bytes& out) {
           if (out.empty()) return;
           out = Encode({Kind::Done, Command::Identify, out[1], 0, otherProtocol});
         };
       }},
      {-7, "COM5", [](test::VirtualLine& line) { line.hungUp = true; }},
      {-8, "COM5",
       [&](test::VirtualLine& line) {
         line.toLibrary = [&](Bytes& out) {
           if (!out.empty() && answers++ > 0) out.clear();
         };
       }},
  };
  for (const Case& c : cases) {
    Bench bench;
    c.prepare(bench.line);
    const Duration before = bench.line.Now();
    EXPECT_EQ(bench.library.InitSerial(c.port), c.result);
    EXPECT_LE(bench.line.Now() - before, std::chrono::seconds(3)) << c.result;
    EXPECT_EQ(bench.library.SerialMode(), c.result == 0 ? 1 : 0);
  }
}

TEST(Library, OpensWhateverTheDevicesDo) {
  Bench bench;
  for (auto& [address, device] : bench.mount.Devices()) device.State(mount::RunState::Silent);
  EXPECT_EQ(bench.library.InitSerial("COM5"), 0);
  EXPECT_EQ(bench.State(16), 0);
}

TEST(Library, GivesTheFailureResultOnBadArgumentsAndWithoutAPort) {
  Bench bench;
  for (const bool open : {false, true}) {
    Library& library = bench.library;
    EXPECT_EQ(library.InitSerial(open ? "COM5" : ""), 0);
    std::int32_t out[2] = {77, 77};
    const std::int32_t packet[10] = {};
    const std::int32_t wrongByte[4] = {0, 0, 256, 0};
    const std::int32_t atTheEnd[6] = {0xFF, 0xFF, 0, 0, 0, 0};
    for (const std::int32_t address : {-1, 0, 256, 0x10010, open ? 300 : 16}) {
      EXPECT_EQ(library.GetState(address, out, out + 1), 0);
      EXPECT_EQ(library.GetModel(address, out), 0);
      EXPECT_EQ(library.GetBootVersion(address, out), -1);
      EXPECT_EQ(library.ReadMemory(address, 0, 0, out), 0);
      EXPECT_EQ(library.EnterBoot(address), 0);
      EXPECT_EQ(library.SendData(address, 4, packet), 0);
      EXPECT_EQ(library.EndProgramming(address), 0);
    }
    EXPECT_EQ(library.GetState(16, nullptr, out), 0);
    EXPECT_EQ(library.GetModel(16, nullptr), 0);
    EXPECT_EQ(library.ReadMemory(16, 0, 0, nullptr), 0);
    EXPECT_EQ(library.ReadMemory(16, 1, 0, out), 0);
    EXPECT_EQ(library.ReadMemory(16, -1, 0, out), 0);
    EXPECT_EQ(library.ReadMemory(16, 0xFFFF, 0x10000, out), 0);
    EXPECT_EQ(library.SendData(16, 4, nullptr), 0);
    for (const std::int32_t count : {-1, 0, 5, 8, 12, 1 << 30})
      EXPECT_EQ(library.SendData(16, count, packet), 0);
    EXPECT_EQ(library.SendData(16, 4, wrongByte), 0);
    EXPECT_EQ(library.SendData(16, 6, atTheEnd), 0);
    EXPECT_EQ(out[0], 77);
    EXPECT_EQ(out[1], 77);
  }
}

TEST(Library, ReadsRunsLongerThanOneFrame) {
  Bench bench;
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  std::vector<std::int32_t> words(100, -1);
  ASSERT_EQ(bench.library.ReadMemory(16, 4, 103, words.data()), 1);
  for (std::uint32_t i = 0; i < words.size(); ++i) EXPECT_EQ(words[i], bench.Device(16).Words().At(4 + i));
  EXPECT_EQ(bench.library.ReadMemory(16, 0x3FFF, 0x4000, words.data()), 0);
}

TEST(Library, ProgramsThroughLossDamageAndLateAnswers) {
  const std::vector<std::uint16_t> image = Image(256);
  struct Case {
    int lossOneIn;
    milliseconds latency;
    std::size_t piece;
  };
  for (const Case& c : std::vector<Case>{{0, milliseconds(100), 256},
                                         {0, milliseconds(400), 256},
                                         {0, milliseconds(1), 1},
                                         {10, milliseconds(1), 256},
                                         {10, milliseconds(200), 3}}) {
    Bench bench;
    std::mt19937 random(42);
    bench.line.latency = c.latency;
    bench.line.piece = c.piece;
    bench.line.toMount = bench.line.toLibrary = [&](Bytes& bytes) {
      if (bytes.empty() || c.lossOneIn == 0 || random() % static_cast<unsigned>(c.lossOneIn) != 0) return;
      std::uint8_t& hit = bytes[random() % bytes.size()];
      if (random() % 2 == 0)
        bytes.clear();
      else
        hit = static_cast<std::uint8_t>(hit ^ (1U << random() % 8));
    };
    bench.ToProgramState();
    EXPECT_TRUE(bench.Program(image));
    EXPECT_TRUE(bench.Holds(image));
    EXPECT_TRUE(bench.Device(16).Complete());
  }
}

TEST(Library, NeverTakesAnOldAnswerForThisOne) {
  Bench bench;
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  bench.Device(17).State(mount::RunState::Boot);
  Bytes last;
  bench.line.toLibrary = [&last](Bytes& bytes) {
    if (!bytes.empty()) std::swap(bytes, last);  // always the answer before
  };
  // Each is answered at its repeat only, and never with the state of the other device.
  EXPECT_EQ(bench.State(16), 1);
  EXPECT_EQ(bench.State(17), 2);
  EXPECT_EQ(bench.State(16), 1);
}

TEST(Library, EndsWithinItsBoundAndAtOnceAfterAHangUp) {
  Bench bench;
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  bench.line.toMount = [](Bytes& bytes) { bytes.clear(); };
  std::uint8_t noise = 0;
  bench.line.toLibrary = [&noise](Bytes& bytes) { bytes.assign(64, ++noise); };
  bench.line.latency = milliseconds(140);  // something always comes just in time
  Duration before = bench.line.Now();
  EXPECT_EQ(bench.State(16), 0);
  EXPECT_LE(bench.line.Now() - before, kExchangeLimit);
  bench.line.hungUp = true;
  before = bench.line.Now();
  EXPECT_EQ(bench.State(16), 0);
  EXPECT_EQ(bench.library.EndProgramming(16), 0);
  EXPECT_EQ(bench.line.Now(), before);
}

TEST(Library, FailsTheEndCallWhenTheDeviceDoesNotHoldWhatWasSent) {
  const std::vector<std::uint16_t> image = Image(64);
  Bench bench;
  bench.ToProgramState();
  bench.line.toMount = [&bench](Bytes& bytes) {
    if (bytes[0] == 0x93) bench.Device(16).Words().ImageWord(33, 0x0BAD);  // just before the check
  };
  EXPECT_FALSE(bench.Program(image));
  EXPECT_EQ(bench.State(16), 3);
  bench.line.toMount = nullptr;
  EXPECT_TRUE(bench.Program(image));
  EXPECT_TRUE(bench.Holds(image));
}

TEST(Library, LocksTheHandControlAgainAfterAPowerCycle) {
  using mount::LinkSetup;
  Bench direct;
  ASSERT_EQ(direct.library.InitSerial("COM5"), 0);
  EXPECT_NE(direct.library.TestForVirtualPort(), 0);
  Bench old(LinkSetup{LinkKind::HandControl, false});
  ASSERT_EQ(old.library.InitSerial("COM5"), 0);
  EXPECT_NE(old.library.TestForUpgradeSupport(), 0);
  Bench virtualPort(LinkSetup{LinkKind::VirtualPort, true});
  ASSERT_EQ(virtualPort.library.InitSerial("COM5"), 0);
  EXPECT_EQ(virtualPort.library.TestForVirtualPort(), 0);

  Bench bench(LinkSetup{LinkKind::HandControl, true});
  ASSERT_EQ(bench.library.InitSerial("COM5"), 0);
  EXPECT_EQ(bench.library.SerialMode(), 2);
  EXPECT_NE(bench.library.TestForVirtualPort(), 0);
  EXPECT_EQ(bench.library.TestForUpgradeSupport(), 0);
  EXPECT_EQ(bench.library.EnterBoot(16), 0);
  bench.library.LockHandControl();
  EXPECT_EQ(bench.library.EnterBoot(16), 1);
  bench.mount.PowerCycle();
  EXPECT_EQ(bench.library.EnterBoot(16), 1);
}

}  // namespace
}  // namespace tarnwick::wire
