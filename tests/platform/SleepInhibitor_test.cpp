#include "platform/SleepInhibitor.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "support/TempFolder.h"

namespace tarnwick {
namespace {

bool ChildrenLeft() {
  return ::waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

TEST(SleepInhibitor, HoldsTheSystemsLockAsLongAsAHoldLives) {
  const test::TempFolder folder;
  const std::filesystem::path said = folder / "said";
  const std::string path = ::getenv("PATH");
  ::setenv("PATH", folder.Path().c_str(), 1);
  SleepInhibitor inhibitor;
  { const awake::Hold nothingThere; }
  EXPECT_FALSE(ChildrenLeft());

  const std::filesystem::path program = folder / "systemd-inhibit";
  test::WriteFile(program, "#!/bin/sh\necho \"$*\" >'" + said.string() + "'\nexec cat\n");
  ::chmod(program.c_str(), 0755);
  ::setenv("PATH", (folder.Path().string() + ":" + path).c_str(), 1);
  {
    const awake::Hold hold;
    for (int i = 0; i < 1000 && !test::ReadFile(said).ends_with("\n"); ++i) ::usleep(10000);
    EXPECT_EQ(test::ReadFile(said),
              "--what=sleep:idle:handle-lid-switch --mode=block --who=Tarnwick "
              "--why=Working on the telescope mount cat\n");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), 0) << "It runs on.";
  }
  EXPECT_FALSE(ChildrenLeft());
  ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace tarnwick
