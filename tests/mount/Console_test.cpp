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
  EXPECT_TRUE(options->untilEof);
  EXPECT_EQ(options->path.kind, wire::LinkKind::HandControl);
  EXPECT_FALSE(options->path.upgradeSupported);
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
  for (const auto& [name, value] :
       std::vector<std::pair<std::string, std::string>>{{"--revision", "256"},
                                                        {"--revision", "2x"},
                                                        {"--state", "asleep"},
                                                        {"--device", "16"},
                                                        {"--device", "0:model=1"},
                                                        {"--device", "16:colour=1"},
                                                        {"--version", "4"},
                                                        {"--hand-control", "new"},
                                                        {"--link", ""},
                                                        {"--baud", "38400"},
                                                        {"--line", "latency"},
                                                        {"--line", "colour=1"},
                                                        {"stray", ""}}) {
    std::string error;
    EXPECT_FALSE(ParseOptions({name, value}, error)) << name << value;
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
  const std::string all = console.Execute("dump 16");
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 0x4000 / 16 + 1);
  EXPECT_EQ(console.Execute("state 16 program"), "ok\n");
  EXPECT_EQ(mount.Devices().at(16).State(), RunState::Program);
  EXPECT_EQ(console.Execute("power"), "ok\n");
  EXPECT_EQ(mount.Devices().at(16).State(), RunState::Running);
  EXPECT_EQ(console.Execute(""), "");
  for (const char* bad : {"jump", "dump", "dump 20", "dump 16 16385", "poke 16 16384 0", "poke 16 0 65536",
                          "state 16", "state 16 asleep", "state 20 boot", "power now"})
    EXPECT_TRUE(console.Execute(bad).starts_with("error: ")) << bad;
  EXPECT_FALSE(console.Quit());
  EXPECT_EQ(console.Execute("quit"), "ok\n");
  EXPECT_TRUE(console.Quit());
}

}  // namespace
}  // namespace tarnwick::mount
