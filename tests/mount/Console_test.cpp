#include "mount/Console.h"

#include <gtest/gtest.h>

#include "mount/Options.h"

namespace tarnwick::mount {
namespace {

TEST(Options, SetMotorControllersAndSingleDevices) {
  std::string error;
  const auto options = ParseOptions(
      {"--link", "x/COM5", "--revision", "6", "--state", "boot", "--old-boot", "--device",
       "17:revision=0x5,version=3.14,state=silent", "--device", "20:model=7", "--hand-control", "old",
       "--until-eof", "--baud", "57600", "--line", "paced=on,latency=100,piece=1,poor-above=19200"},
      error);
  ASSERT_TRUE(options) << error;
  EXPECT_EQ(options->link, "x/COM5");
  EXPECT_TRUE(options->untilEof && !options->path.upgradeSupported);
  EXPECT_EQ(options->path.fastest, 57600);
  EXPECT_EQ(DescribeLine(options->line), "paced=on latency=100 piece=1 poor-above=19200");
  EXPECT_EQ(options->devices.size(), 5U);
  const DeviceSetup& first = options->devices.at(16);
  EXPECT_EQ(first.revision * 10 + first.bootVersion, 61);
  EXPECT_EQ(first.state, RunState::Boot);
  const DeviceSetup& second = options->devices.at(17);
  EXPECT_EQ(second.revision * 1000 + second.major * 100 + second.minor, 5314);
  EXPECT_EQ(second.state, RunState::Silent);
}

TEST(Options, AreRefusedWithAReason) {
  for (const char* bad :
       {"--revision=256", "--revision=2x", "--state=asleep", "--device=16", "--device=0:model=1",
        "--baud=38400", "--line=latency", "--line=colour=1", "stray="}) {
    const std::string text = bad, name = text.substr(0, text.find('='));
    std::string error;
    EXPECT_FALSE(ParseOptions({name, text.substr(name.size() + 1)}, error)) << bad;
    EXPECT_NE(error.find(name), std::string::npos);
  }
}

TEST(Console, CarriesOutItsCommands) {
  Mount mount;
  mount.Put(16, {});
  Endpoint endpoint(mount);
  Line line(endpoint);
  std::string told;
  Faults faults(mount, line, [&told](const std::string& text) { told += text + "; "; });
  Console console(mount, line, faults);
  EXPECT_EQ(console.Execute("state"),
            "16 state=running model=5 revision=2 boot=2 version=4.02 complete=yes\nend\n");
  EXPECT_EQ(console.Execute("poke 16 0 0xABCD"), "ok\n");
  EXPECT_EQ(console.Execute(" dump 16 2\r"), "ABCD 1007\nend\n");
  console.Execute("state 16 program");
  EXPECT_EQ(console.Execute("power"), "ok\n");
  EXPECT_EQ(mount.Devices().at(16).State(), RunState::Running);
  for (const char* bad : {"jump", "dump", "dump 20", "dump 16 16385", "poke 16 16384 0", "poke 16 0 65536",
                          "state 16", "state 16 asleep", "state 20 boot", "power now"})
    EXPECT_TRUE(console.Execute(bad).starts_with("error: ")) << bad;
  for (const char* bad :
       {"fault", "fault flip", "fault flip 2", "fault flip 0.1 up", "fault cut 0", "fault pull x",
        "fault cut 5 torn 1 1", "fault stuck 16 0 16 1", "fault refuse jump 1 3", "fault refuse end 1 0",
        "fault late 1 10001", "fault seed -1", "fault nothing", "hand-control none"})
    EXPECT_TRUE(console.Execute(bad).starts_with("error: ")) << bad;
  EXPECT_EQ(told, "power switched off and on; ");
  for (const char* good :
       {"fault refuse state 1 3", "fault stuck 16 0 1 1", "fault cut 12 torn", "fault pull 6 1"})
    EXPECT_EQ(console.Execute(good), "ok\n") << good;
  EXPECT_EQ(console.Execute("fault none"), "ok\n");
  EXPECT_TRUE(told.ends_with("plays pull 6 1; plays none; ")) << told;
  EXPECT_EQ(console.Execute("hand-control virtual"), "ok\n");
  EXPECT_EQ(mount.Link().kind, wire::LinkKind::VirtualPort);
  EXPECT_TRUE(!console.Quit() && console.Execute("quit") == "ok\n" && console.Quit());
}

}  // namespace
}  // namespace tarnwick::mount
