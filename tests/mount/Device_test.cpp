// The rules that a simulated device keeps, each asked for as a program would.
#include "mount/Device.h"

#include <gtest/gtest.h>

#include <array>

namespace tarnwick::mount {
namespace {

using wire::Bytes;
using wire::Command;
using wire::Reason;

struct Asked {
  explicit Asked(const DeviceSetup& setup) : device(setup) {}
  Bytes Done(Command command, const Bytes& payload = {}) {
    const Reply reply = device.Handle(command, payload);
    EXPECT_EQ(reply.kind, wire::Kind::Done) << "command " << static_cast<int>(command);
    return reply.payload;
  }
  /// The reason of a refusal; 0 when it was none.
  int Refusal(Command command, const Bytes& payload = {}) {
    const Reply reply = device.Handle(command, payload);
    return reply.kind == wire::Kind::Refused ? reply.payload[0] : 0;
  }
  void Write(std::uint32_t index, std::uint16_t word) {
    const auto low = [](std::uint32_t value) { return static_cast<std::uint8_t>(value & 0xFF); };
    Done(Command::Write1, {low(index >> 8), low(index), low(word), low(word >> 8U)});
  }
  std::uint16_t Read(std::uint32_t place) {
    const auto high = static_cast<std::uint8_t>(place >> 8);
    const Bytes answer = Done(Command::Read, {high, static_cast<std::uint8_t>(place & 0xFF), 1});
    return answer.size() == 3 ? wire::Get16(answer, 1) : std::uint16_t{0};
  }
  /// Programs an image that begins with these words and carries the version 7.31.
  int Program(const std::vector<std::uint16_t>& words) {
    Done(Command::Start);
    for (std::uint32_t i = 0; i < words.size(); ++i) Write(i, words[i]);
    constexpr std::array<std::uint16_t, 4> kMarker = {0x1A5A, 0x25A5, 7, 31};
    for (std::uint32_t i = 0; i < kMarker.size(); ++i) Write(8 + i, kMarker[i]);
    return Refusal(Command::End);
  }
  Bytes State() { return Done(Command::State); }

  Device device;
};

DeviceSetup With(int revision, RunState state, int boot = 2) {
  DeviceSetup setup;
  setup.revision = revision;
  setup.state = state;
  setup.bootVersion = boot;
  return setup;
}

TEST(Device, LeavesItsFirmwareAndComesBackToACompleteOneOnly) {
  DeviceSetup setup = With(2, RunState::Running, 1);
  setup.claims = 3;
  Asked asked(setup);
  EXPECT_EQ(asked.Refusal(Command::Start), 1);
  EXPECT_EQ(asked.State(), (Bytes{1, 4, 2}));
  EXPECT_EQ(asked.Done(Command::BootRevision), Bytes{3});  // below revision 4 it falls to boot mode by that
  EXPECT_EQ(asked.State(), (Bytes{2, 0, 0}));
  asked.device.PowerCycle();
  EXPECT_EQ(asked.State()[0], 1);
  asked.Done(Command::Enter);
  asked.Done(Command::Start);
  for (const std::uint16_t value : std::vector<std::uint16_t>{0xABCD, 0x1234}) asked.Write(0x3FFF, value);
  EXPECT_EQ(asked.device.Words().ImageWord(0x3FFF), 0x1234);
  EXPECT_EQ(asked.Refusal(Command::Write4, {0x3F, 0xFD, 0, 0, 0, 0, 0, 0, 0, 0}), 2);
  asked.device.PowerCycle();
  EXPECT_EQ(asked.State()[0], 2);
  EXPECT_EQ(asked.Program({0x1111, 0x2222}), 0);
  asked.device.PowerCycle();
  EXPECT_EQ(asked.State(), (Bytes{1, 7, 31}));
}

TEST(Device, KeepsTheFirstWordsApartBelowRevision4) {
  for (const int revision : {2, 3, 4}) {
    Asked asked(With(revision, RunState::Boot));
    asked.Program({0x0101, 0x0202, 0x0303, 0x0404, 0x0505});
    const bool apart = revision < 4;
    for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(asked.Read((apart ? 0xFFFC : 0) + i), 0x0101 * (i + 1));
    EXPECT_EQ(asked.Read(0), apart ? 0x160A : 0x0101);
    EXPECT_EQ(asked.Read(20), apart ? 0x3FFF : 0xFFFF);
    EXPECT_EQ(asked.Refusal(Command::Read, {0x3F, 0xFF, 2}), apart ? 2 : 0);
  }
}

TEST(Device, IsRenewedByTheBootPackageThatFitsIt) {
  const std::vector<std::uint16_t> jumpFix = {0x120A, 0x118A, 0x2810};
  const auto update = [](std::uint16_t revision) {
    std::vector<std::uint16_t> words = {0xD8FF, 0xEF00, 0xF003};
    words.resize(0x348, 0xFFFF);
    words[0x347] = static_cast<std::uint16_t>(0x0E00 | revision);
    return words;
  };
  struct Case {
    int revision;
    std::vector<std::uint16_t> image;
    bool taken;
  };
  for (const Case& c : std::vector<Case>{{2, jumpFix, true},
                                         {5, jumpFix, false},
                                         {5, update(5), true},
                                         {6, update(6), true},
                                         {5, update(6), false},
                                         {2, update(5), false},
                                         {4, update(4), false}}) {
    Asked asked(With(c.revision, RunState::Boot, 1));
    EXPECT_NE(asked.Read(0), 0x160A);
    EXPECT_EQ(asked.Program(c.image), c.taken ? 0 : static_cast<int>(Reason::NotTaken));
    EXPECT_EQ(asked.device.BootVersion(), c.taken ? 2 : 1) << c.revision;
    const bool renewed = asked.Read(0) == 0x160A && asked.Read(1) == 0x158A && asked.Read(2) == 0x2F00;
    EXPECT_EQ(renewed, c.taken && c.revision < 4);
  }
}

}  // namespace
}  // namespace tarnwick::mount
