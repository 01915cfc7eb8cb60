// How a simulated device goes through its states to a boot package, how long its mount waits for the rest of
// a frame, and how a mount is set up.
#include <gtest/gtest.h>

#include <array>

#include "mount/Device.h"
#include "mount/Line.h"
#include "mount/Options.h"

namespace tarnwick::mount {
namespace {

using wire::Command;
using Words = std::array<std::uint16_t, 3>;

TEST(Device, IsRenewedByTheBootPackageThatFitsIt) {
  constexpr Words kJumpFix = {0x120A, 0x118A, 0x2810}, kUpdate = {0xD8FF, 0xEF00, 0xF003};
  const struct {
    int revision;
    Words image;
    std::uint16_t fits;  ///< The revision that the image tells.
    bool taken;
  } kCases[] = {{2, kJumpFix, 2, true}, {4, kJumpFix, 4, false}, {4, kUpdate, 4, false},
                {5, kUpdate, 5, true},  {6, kUpdate, 6, true},   {5, kUpdate, 6, false}};
  for (const auto& c : kCases) {
    Device device({.revision = c.revision, .bootVersion = 1, .claims = 3});
    const auto refuses = [&](Command command, const wire::Bytes& payload = {}) {
      return device.Handle(command, payload).kind == wire::Kind::Refused;
    };
    EXPECT_TRUE(refuses(Command::Start));
    EXPECT_FALSE(refuses(Command::Enter));
    EXPECT_TRUE(refuses(Command::Model));
    EXPECT_EQ(device.Handle(Command::BootRevision, {}).payload, wire::Bytes{3});
    EXPECT_FALSE(refuses(Command::Start));
    const wire::Bytes loader = device.Handle(Command::Read, {0, 0, 3}).payload;
    EXPECT_EQ(loader == wire::Bytes({3, 0x12, 0x8A, 0x12, 0x0A, 0x28, 0x00}), c.revision == 2)
        << "An old boot loader is known by its words in the midst of programming too.";
    for (std::uint32_t i = 0; i < c.image.size(); ++i) device.Words().ImageWord(i, c.image[i]);
    device.Words().ImageWord(0x347, static_cast<std::uint16_t>(0x0E00 | c.fits));
    EXPECT_TRUE(refuses(Command::Write2, {0xFF, 0xFF, 0, 0, 0, 0})) << "Its second word is outside.";
    EXPECT_EQ(refuses(Command::End), !c.taken);
    EXPECT_EQ(device.BootVersion(), c.taken ? 2 : 1) << c.revision;
    device.PowerCycle();
    EXPECT_EQ(device.State(), RunState::Boot);
  }
}

TEST(Endpoint, TakesAFrameThatDoesNotGoOnFor40MillisecondsForNoise) {
  using std::chrono::milliseconds;
  Mount mount;
  mount.Put(16, {});
  Endpoint endpoint(mount);
  wire::Bytes bytes = {0x97};  // The head of a longer frame, which came up by itself.
  for (const std::uint8_t byte : wire::Encode({wire::Kind::Request, Command::State, 1, 16, {}}))
    bytes.push_back(byte);
  const Endpoint::Time now = milliseconds(1000);
  EXPECT_TRUE(endpoint.Receive(bytes, now).empty()) << "The frame may go on.";
  EXPECT_TRUE(endpoint.Tick(now + milliseconds(39)).empty());
  EXPECT_EQ(endpoint.Due(), now + milliseconds(40));
  EXPECT_FALSE(endpoint.Tick(now + milliseconds(40)).empty()) << "The request behind the noise is heard.";
}

TEST(Line, PlaysAHandControlAndAnAdapterThatHoldsBack) {
  const struct {
    const char* setup;
    std::uint8_t address;
    std::int64_t arrives;  ///< Milliseconds after the request, which comes 3 ms after a whole second.
  } kCases[] = {
      {"hand-control=60", 16, 60}, {"hand-control=60", 0, 0}, {"hold=16", 16, 13}, {"latency=20", 0, 20}};
  for (const auto& c : kCases) {
    Mount mount;
    mount.Put(16, {});
    Endpoint endpoint(mount);
    Line line(endpoint);
    ASSERT_TRUE(ParseLine(c.setup, line.setup));
    const Line::Time now = std::chrono::milliseconds(16'003),
                     arrives = now + std::chrono::milliseconds(c.arrives);
    line.Send(
        wire::Encode(
            {wire::Kind::Request, c.address == 0 ? Command::Identify : Command::State, 1, c.address, {}}),
        wire::kBaseSpeed, now);
    EXPECT_TRUE(c.arrives == 0 || line.Take(wire::kBaseSpeed, arrives - Line::Time(1)).empty()) << c.setup;
    EXPECT_FALSE(line.Take(wire::kBaseSpeed, arrives).empty()) << c.setup;
  }
}

TEST(Options, SetTheMountUpOrAreRefusedWithAReason) {
  std::string error;
  const auto options = ParseOptions(
      {"--hand-control", "old", "--line", "paced=on,latency=100,piece=1,poor-above=19200"}, error);
  ASSERT_TRUE(options) << error;
  EXPECT_FALSE(options->path.upgradeSupported);
  EXPECT_EQ(DescribeLine(options->line),
            "paced=on piece=1 poor-above=19200 rounds-to=921600 latency=100 hold=0 hand-control=0");
  for (const std::string name : {"--revision=256", "--revision=2x", "--state=asleep", "--device=16",
                                 "--device=0:model=1", "--baud=38400", "--line=latency", "stray="}) {
    const std::size_t end = name.find('=');
    EXPECT_FALSE(ParseOptions({name.substr(0, end), name.substr(end + 1)}, error)) << name;
    EXPECT_NE(error.find(name.substr(0, end)), std::string::npos);
  }
}

}  // namespace
}  // namespace tarnwick::mount
