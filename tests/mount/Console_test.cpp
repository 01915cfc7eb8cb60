#include "mount/Console.h"

#include <gtest/gtest.h>

#include "mount/Options.h"

namespace tarnwick::mount {
namespace {

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

TEST(Console, RefusesWhatItCannotDo) {
  Mount mount;
  mount.Put(16, {});
  Endpoint endpoint(mount);
  Line line(endpoint);
  Faults faults(mount, line, [](const std::string& told) { ADD_FAILURE() << told; });
  Console console(mount, line, faults);
  EXPECT_EQ(console.Execute(" dump 16 2\r"), "1000 1007\nend\n");
  for (const char* bad : {"jump",
                          "dump",
                          "dump 20",
                          "dump 16 16385",
                          "poke 16 16384 0",
                          "poke 16 0 65536",
                          "state 16",
                          "state 16 asleep",
                          "state 20 boot",
                          "power now",
                          "fault",
                          "fault flip",
                          "fault flip 2",
                          "fault flip 0.1 up",
                          "fault cut 0",
                          "fault pull x",
                          "fault cut 5 torn 1 1",
                          "fault stuck 16 0 16 1",
                          "fault refuse jump 1 3",
                          "fault refuse end 1 0",
                          "fault late 1 10001",
                          "fault seed -1",
                          "fault nothing",
                          "hand-control none"})
    EXPECT_TRUE(console.Execute(bad).starts_with("error: ")) << bad;
}

}  // namespace
}  // namespace tarnwick::mount
