// The frames against the page of the protocol; the library's core against the simulated mount's core, on
// virtual time.
#include "linklib/LinkCore.h"

#include <gmock/gmock.h>

#include <sstream>

#include "linklib/Checksum.h"
#include "support/TempFolder.h"
#include "support/VirtualLine.h"

namespace tarnwick::wire {
namespace {

using mount::LinkSetup;
using std::chrono::milliseconds;
using testing::AllOf;
using testing::HasSubstr;

TEST(Frame, AgreesWithThePage) {
  // Kind, command, number and address of each. The payload is what the frame must hold to be whole.
  using Head = std::tuple<Kind, Command, int, int>;
  const Head expected[] = {
      {Kind::Request, Command::Identify, 0, 0},   {Kind::Done, Command::Identify, 0, 0},
      {Kind::Request, Command::Speed, 1, 0},      {Kind::Done, Command::Speed, 1, 0},
      {Kind::Request, Command::State, 1, 16},     {Kind::Done, Command::State, 1, 16},
      {Kind::Request, Command::Write2, 0x2C, 16}, {Kind::Done, Command::Write2, 0x2C, 16},
      {Kind::Request, Command::Write2, 0x2D, 16}, {Kind::Done, Command::Write2, 0x2D, 16},
      {Kind::Refused, Command::Write2, 0x2D, 16}, {Kind::Request, Command::Read, 0x2D, 17},
      {Kind::Done, Command::Read, 0x2D, 17},      {Kind::Request, Command::Times, 0x2E, 0},
      {Kind::Done, Command::Times, 0x2E, 0},      {Kind::Request, Command::Start, 0x2E, 16},
      {Kind::Refused, Command::Start, 0x2E, 16}};
  constexpr Known kNext[] = {{0x2D, 16, 302}};
  const std::string page = test::ReadFile(TARNWICK_PROTOCOL_PAGE);
  std::istringstream examples(page.substr(page.find("### Examples")));
  for (const Head& head : expected) {
    std::string hex;
    std::getline(std::getline(examples, hex, '`'), hex, '`');
    std::istringstream text(hex);
    Bytes bytes;
    for (unsigned value = 0; text >> std::hex >> value;) bytes.push_back(static_cast<std::uint8_t>(value));
    Frame frame;
    std::size_t length = 0;
    EXPECT_EQ(ScanFrame(bytes, frame, length, kNext), Scan::Whole) << hex;
    EXPECT_EQ(Head(frame.kind, frame.command, frame.sequence, frame.address), head) << hex;
    EXPECT_EQ(Encode(frame), bytes) << hex;
  }
  EXPECT_EQ(Crc32(Bytes{'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0xCBF43926U);
}

struct Bench {
  explicit Bench(const LinkSetup& link = {}) : mount(link) {
    for (const auto address : {std::uint8_t{16}, std::uint8_t{17}}) mount.Put(address, {});
  }
  /// What `call` gives, which is to be over in time.
  template <class Call>
  std::int32_t Within(Duration limit, Call&& call) {
    const Duration end = line.now + limit;
    const std::int32_t result = call();
    EXPECT_LE(line.now, end);
    return result;
  }
  std::int32_t Open(const char* port = "COM5") {
    return Within(kOpenLimit, [&] { return core.InitSerial(port); });
  }
  std::int32_t State(std::int32_t address) {
    std::int32_t major = 0, minor = 0;
    return Within(kAskLimit, [&] { return core.GetState(address, &major, &minor); });
  }
  /// -1 when it cannot be read.
  std::int32_t Word(std::int32_t place, Duration limit = kAskLimit) {
    std::int32_t word = -1;
    return Within(limit, [&] { return core.ReadMemory(16, place, place, &word); }) == 1 ? word : -1;
  }

  mount::Mount mount;
  test::VirtualLine line{mount};
  const test::TempFolder folder;
  LinkCore core{line, line, folder / "trace.txt"};
};

TEST(LinkCore, TellsWhyNoTelescopeIsThere) {
  const auto frame = [](Kind kind, Command command, const Bytes& payload) {
    return [=](Bytes& out) {
      if (!out.empty()) out = Encode({kind, command, out[1], 0, payload});
    };
  };
  const auto otherSpeed = [](Bytes& out) {
    if (!out.empty() && out[0] == 0x43) out = Encode({Kind::Done, Command::Speed, out[1], 0, {6}});
  };
  int answers = 0;
  const std::vector<std::pair<std::int32_t, mount::Line::Damage>> cases = {
      {-2, [](Bytes& out) { out.clear(); }},
      {-3, [](Bytes& out) { out.assign(out.size(), 'O'); }},
      {-4, frame(Kind::Request, Command::Identify, {})},
      {-5, frame(Kind::Done, Command::Enter, {})},
      {-5, frame(Kind::Done, Command::Identify, {'X', 'W', 1, 0, 0, 0})},
      {-5, frame(Kind::Done, Command::Identify, {'T', 'W', 1, 3, 0, 0})},
      {-6, frame(Kind::Done, Command::Identify, {'T', 'W', 2, 0, 0, 0})},
      {-8, otherSpeed},
      {-8, [&](Bytes& out) { answers += out.empty() || answers > 0 ? out.clear(), 0 : 1; }}};
  for (const auto& [result, damage] : cases) {
    Bench bench;
    bench.line.line.toLibrary = damage;
    EXPECT_EQ(bench.Open(), result);
    EXPECT_EQ(bench.core.SerialMode(), 0);
    EXPECT_EQ(bench.core.Note(), "cause: " + std::string(CauseText(static_cast<Opening>(result))) + "\n");
  }
  Bench bench({LinkKind::VirtualPort, false});
  EXPECT_EQ(bench.Open("COM6"), -1);
  EXPECT_EQ(bench.core.Note(), "cause: the port cannot be opened: No such device\n");
  bench.line.hungUp = true;
  EXPECT_EQ(bench.Open(), -7);
  bench.line.hungUp = false;
  for (auto& [address, device] : bench.mount.Devices()) device.State(mount::RunState::Silent);
  EXPECT_EQ(bench.Open(), 0);
  EXPECT_EQ(bench.core.SerialMode(), 2);
  EXPECT_EQ(bench.core.TestForVirtualPort(), 0);
  EXPECT_EQ(bench.core.TestForUpgradeSupport(), 1);
  EXPECT_EQ(bench.State(16), 0);
}

TEST(LinkCore, GivesTheFailureResultOnBadArgumentsAndWithoutAPort) {
  Bench bench;
  LinkCore& core = bench.core;
  std::int32_t out = 77;
  const std::int32_t packet[10] = {}, wrongByte[4] = {0, 0, 256, 0}, atTheEnd[6] = {0xFF, 0xFF, 0, 0, 0, 0};
  for (const bool open : {false, true}) {
    EXPECT_EQ(bench.Open(open ? "COM5" : ""), 0);
    for (const std::int32_t address : {-1, 0, 256, 0x10010, open ? 300 : 16}) {
      EXPECT_EQ(core.GetState(address, &out, &out), 0);
      EXPECT_EQ(core.ReadMemory(address, 0, 0, &out), 0);
      EXPECT_EQ(core.GetBootVersion(address, &out), -1);
      EXPECT_EQ(core.EnterBoot(address), 0);
      EXPECT_EQ(core.SendData(address, 4, packet), 0);
    }
    for (const auto& [first, last] : {std::pair(1, 0), std::pair(-1, 0), std::pair(0xFFFF, 0x10000)})
      EXPECT_EQ(core.ReadMemory(16, first, last, &out), 0);
    for (const std::int32_t count : {-1, 0, 5, 12}) EXPECT_EQ(core.SendData(16, count, packet), 0);
    EXPECT_EQ(core.SendData(16, 4, wrongByte), 0);
    EXPECT_EQ(core.SendData(16, 6, atTheEnd), 0);
    EXPECT_EQ(out, 77);
  }
  bench.line.line.toLibrary = [](Bytes& bytes) {
    if (!bytes.empty() && bytes[0] == 0x54)
      bytes = Encode({Kind::Done, Command::Read, bytes[1], 16, {2, 0, 1, 0, 2}});
  };
  std::array<std::int32_t, 2> words = {77, 77};
  EXPECT_EQ(core.ReadMemory(16, 0, 0, words.data()), 0) << "An answer with more words than were asked for.";
  EXPECT_EQ(words[1], 77);
}

TEST(LinkCore, TakesTheFastestSpeedThatTheLineBears) {
  // The fastest of the mount, of the line, and the one to be taken; milliseconds of latency.
  const std::array<int, 4> cases[] = {{115200, 115200, 115200, 0}, {115200, 115200, 115200, 200},
                                      {57600, 115200, 57600, 16},  {9600, 115200, 9600, 0},
                                      {115200, 57600, 57600, 16},  {115200, 19200, 19200, 100},
                                      {115200, 9600, 9600, 16}};
  for (const auto& [fastest, bears, wanted, latency] : cases) {
    Bench bench({LinkKind::Direct, true, fastest});
    bench.line.line.setup = {true, milliseconds(latency), 0, bears};
    for (const char* round : {"first", "left at that speed by a killed program"}) {
      LinkCore core{bench.line, bench.line};
      EXPECT_EQ(bench.Within(kOpenLimit, [&] { return core.InitSerial("COM5"); }), 0) << round;
      EXPECT_EQ(core.Speed(), wanted) << round;
      EXPECT_EQ(bench.mount.Speed(), wanted);
      std::int32_t version = 0;
      EXPECT_EQ(core.GetState(16, &version, &version), 1);
    }
  }
  Bench closed({LinkKind::Direct, true, 921600});
  closed.line.line.setup = {.paced = true, .latency = milliseconds(16)};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(closed.Within(milliseconds(200), [&] { return closed.core.InitSerial("COM5"); }), 0);
    EXPECT_EQ(closed.core.Speed(), 921600);
    EXPECT_EQ(closed.core.InitSerial(""), 0);
    EXPECT_EQ(closed.mount.Speed(), kBaseSpeed) << "Sent home, so that it is found at once.";
  }
}

TEST(LinkCore, FindsItsWayBackAfterAPowerCycleWithinTheCall) {
  for (const int latency : {0, 200}) {
    Bench bench({LinkKind::HandControl, true});
    bench.line.line.setup = {true, milliseconds(latency)};
    ASSERT_EQ(bench.Open(), 0);
    EXPECT_EQ(bench.core.TestForVirtualPort(), 1) << "It is none.";
    const auto enter = [&] { return bench.Within(kAskLimit, [&] { return bench.core.EnterBoot(16); }); };
    EXPECT_EQ(enter(), 0);
    bench.core.LockHandControl();
    for (int i = 0; i < 2; ++i) {
      bench.mount.PowerCycle();
      EXPECT_EQ(enter(), 1);
      EXPECT_EQ(bench.core.Speed(), latency == 0 ? 115200 : bench.mount.Speed());
    }
    bench.line.line.toMount = [](Bytes& bytes) { bytes.clear(); };
    EXPECT_EQ(bench.Within(milliseconds(2500), [&] { return bench.State(16); }), 0)
        << "Silence is soon told.";
    bench.mount.PowerCycle();
    bench.line.line.toMount = nullptr;
    EXPECT_EQ(bench.State(16), 1);
  }
}

TEST(LinkCore, GoesOnWhereItWasOnceTheSameAdapterIsBack) {
  Bench bench({LinkKind::HandControl, true});
  const std::int32_t word[4] = {0, 0, 0x34, 0x12}, before[4] = {1, 0, 0x78, 0x16};
  std::vector<int> numbers;
  bench.line.line.toMount = [&](Bytes& bytes) { numbers.push_back(bytes.empty() ? -1 : bytes[1]); };
  ASSERT_EQ(bench.Open(), 0);
  bench.core.LockHandControl();
  EXPECT_EQ(bench.core.EnterBoot(16), 1);
  EXPECT_EQ(bench.core.StartProgramming(16), 1);
  EXPECT_EQ(bench.core.SendData(16, 4, before), 1);
  bench.mount.PowerCycle();
  EXPECT_EQ(bench.State(16), 2);
  bench.core.LockHandControl();
  bench.line.line.toLibrary = [&](Bytes& bytes) { bench.line.hungUp = !bytes.empty(); };
  EXPECT_EQ(bench.core.StartProgramming(16), 0) << "It did start; the answer came to nobody.";
  bench.line.line.toLibrary = nullptr;
  bench.line.hungUp = false;
  bench.line.there = false;
  EXPECT_EQ(bench.Within({}, [&] { return bench.core.EnterBoot(16); }), 0) << "Another adapter is there.";
  bench.line.there = true;
  const int last = numbers.back();
  EXPECT_EQ(bench.State(16), 3);
  EXPECT_EQ(bench.core.SendData(16, 4, word), 1);
  EXPECT_EQ(numbers.back(), (last + 3) % 256) << "The numbers go on: two were of calls before.";
  EXPECT_EQ(bench.core.StartProgramming(16), 0);
  EXPECT_EQ(bench.mount.Devices().at(16).Words().ImageWord(0), 0x1234) << "Nothing is erased twice.";
  bench.line.hungUp = true;
  EXPECT_EQ(bench.State(16), 0);
  bench.line.hungUp = false;
  EXPECT_EQ(bench.State(16), 3);
  bench.mount.Devices().at(16).Words().ImageWord(0, 0x1235);
  EXPECT_EQ(bench.core.EndProgramming(16), 0) << "What was written is still known.";
  EXPECT_EQ(bench.core.SendData(16, 4, word), 1);
  EXPECT_EQ(bench.core.EndProgramming(16), 1)
      << "What was written before Start is not held against the device, though no answer came to it.";
  EXPECT_EQ(bench.core.SerialMode(), 2);
}

TEST(LinkCore, SendsBlocksThatFollowEachOtherInFewBytes) {
  for (const bool first : {false, true})
    for (const std::int32_t words : {1, 2, 4}) {
      Bench bench({.first = first});
      std::int32_t bytes = 0;
      const auto count = [&](Bytes& piece) { bytes += static_cast<std::int32_t>(piece.size()); };
      const auto send = [&](std::int32_t at) {
        const std::int32_t packet[10] = {0, at, 1, 2, 3, 4, 5, 6, 7, at};
        bytes = -2 * words;
        EXPECT_EQ(bench.core.SendData(16, 2 + 2 * words, packet), 1);
        return bytes;
      };
      ASSERT_EQ(bench.Open(), 0);
      EXPECT_EQ(bench.core.EnterBoot(16), 1);
  EXPECT_EQ(bench.core.StartProgramming(16), 1);
      bench.line.line.toMount = bench.line.line.toLibrary = count;
      EXPECT_EQ(send(0), 12);
      EXPECT_EQ(send(words), first ? 12 : 8) << "A mount of the first version takes whole frames alone.";
      EXPECT_EQ(send(3 * words), 12) << "It does not follow.";
      bench.State(17);
      EXPECT_EQ(send(4 * words), 12) << "Not at once.";
      EXPECT_EQ(bench.mount.Devices().at(16).Words().ImageWord(static_cast<std::uint32_t>(4 * words)),
                0x0201);
    }
}

TEST(LinkCore, ReadsAheadWhatNothingCanHaveChanged) {
  Bench bench;
  ASSERT_EQ(bench.Open(), 0);
  std::vector<std::int32_t> words(200);
  ASSERT_EQ(bench.core.ReadMemory(16, 4, 203, words.data()), 1);
  int requests = 0;
  bench.line.line.toMount = [&](Bytes& bytes) { requests += bytes.empty() ? 0 : 1; };
  for (std::int32_t i = 0; i < 200; ++i) EXPECT_EQ(bench.Word(4 + i), words[static_cast<std::size_t>(i)]);
  EXPECT_EQ(requests, 5);
  const auto change = [&](std::uint32_t index) {
    bench.mount.Devices().at(16).Words().ImageWord(index, 0x0ABC);
  };
  change(204);
  bench.line.now += milliseconds(1000);
  EXPECT_EQ(bench.Word(204), 0x0ABC);
  change(205);
  bench.State(17);
  EXPECT_EQ(bench.Word(205), 0x0ABC);
  requests = 0;
  for (const std::int32_t place : {0x3FFE, 0x3FFF, 0xFFFC, 0xFFFD, 0xFFFE, 0xFFFF})
    EXPECT_GE(bench.Word(place), 0);
  EXPECT_EQ(bench.Word(0x4000), -1);
  EXPECT_EQ(requests, 5);
  bench.line.line.toLibrary = [](Bytes& bytes) { bytes.resize(std::min<std::size_t>(bytes.size(), 20)); };
  EXPECT_GE(bench.Word(0), 0);
  EXPECT_GE(bench.Word(1), 0);
  EXPECT_GE(bench.Word(2, milliseconds(1)), 0) << "Alone, as the last one had to be.";
}

TEST(LinkCore, TracesToABoundedFile) {
  Bench bench;
  const auto traced = [&] { return test::ReadFile(bench.folder / "trace.txt"); };
  ASSERT_EQ(bench.Open(), 0);
  EXPECT_FALSE(std::filesystem::exists(bench.folder / "trace.txt"));
  for (const std::int32_t filter : {Trace::kFrames, Trace::kPort}) bench.core.DebugFilter(1, filter);
  bench.Open();
  bench.State(16);
  EXPECT_THAT(traced(), AllOf(HasSubstr("port  speed 115200\n"), HasSubstr(" State device 16\n"),
                              HasSubstr(" State device 16 done: 01 04 02\n")));
  std::string old;
  while (old.size() < Trace::kMostBytes) old += "an older line\n";
  test::WriteFile(bench.folder / "trace.txt", old);
  bench.State(17);
  EXPECT_LT(traced().size(), Trace::kMostBytes * 2 / 3);
  EXPECT_THAT(traced(), AllOf(testing::StartsWith("an older line\n"), HasSubstr("State device 17 done")));
}

}  // namespace
}  // namespace tarnwick::wire
