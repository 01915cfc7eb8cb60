// The rules that a simulated device keeps, each asked for as a program would, and how it is set up.
#include "mount/Device.h"

#include <gtest/gtest.h>

#include <array>

#include "mount/Options.h"

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

TEST(Device, LeavesItsFirmwareAndComesBackToACompleteOneOnly) {
  Asked asked({.revision = 2, .bootVersion = 1, .claims = 3});
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
  for (const Case& c : {Case{2, jumpFix, true}, Case{5, jumpFix, false}, Case{5, update(5), true},
                        Case{6, update(6), true}, Case{5, update(6), false}, Case{4, update(4), false}}) {
    Asked asked({.revision = c.revision, .bootVersion = 1, .state = RunState::Boot});
    EXPECT_EQ(asked.Program(c.image), c.taken ? 0 : static_cast<int>(Reason::NotTaken));
    EXPECT_EQ(asked.device.BootVersion(), c.taken ? 2 : 1) << c.revision;
  }
}

TEST(Options, SetMotorControllersAndSingleDevicesOrAreRefusedWithAReason) {
  std::string error;
  const auto options =
      ParseOptions({"--revision", "6", "--old-boot", "--device", "17:revision=0x5,version=3.14,state=silent",
                    "--hand-control", "old", "--line", "paced=on,latency=100,piece=1,poor-above=19200"},
                   error);
  ASSERT_TRUE(options) << error;
  EXPECT_FALSE(options->path.upgradeSupported);
  EXPECT_EQ(DescribeLine(options->line), "paced=on latency=100 piece=1 poor-above=19200");
  const DeviceSetup &first = options->devices.at(16), &second = options->devices.at(17);
  EXPECT_EQ(first.revision * 10 + first.bootVersion, 61);
  EXPECT_EQ(second.revision * 1000 + second.major * 100 + second.minor, 5314);
  EXPECT_EQ(second.state, RunState::Silent);
  for (const char* bad :
       {"--revision=256", "--revision=2x", "--state=asleep", "--device=16", "--device=0:model=1",
        "--baud=38400", "--line=latency", "--line=colour=1", "stray="}) {
    const std::string text = bad, name = text.substr(0, text.find('='));
    EXPECT_FALSE(ParseOptions({name, text.substr(name.size() + 1)}, error)) << bad;
    EXPECT_NE(error.find(name), std::string::npos);
  }
}

}  // namespace
}  // namespace tarnwick::mount
