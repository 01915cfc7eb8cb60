// The real program over the real link library and the mount's process, in bad luck.
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QProcess>

#include "link/LinkLibrary.h"
#include "mount/MountProcess.h"
#include "support/PackageText.h"
#include "support/ProgramTest.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class System : public ProgramTest {
 public:
  System() {
    fs::copy(TARNWICK_LIBRARY, folder / "Tarnwick.so");
    const PackageDevice azm{"Azm", 16, CountedWords(51), "0402"};
    WriteFile(folder / "MotorControllers/A.qal", PackageText(5, "", {azm, {"Alt", 17, azm.words, "0402"}}));
  }
  ~System() override { Seam<ILinkLibrary>::Uninstall(); }
  void StartWithMount() {
    ASSERT_TRUE(mount.Start(TARNWICK_MOUNT, folder / "ports/COM5", {}));
    library = LoadLinkLibrary(folder / "Tarnwick.so");
    Seam<ILinkLibrary>::Install(*library);
    Start();
  }

  std::unique_ptr<ILinkLibrary> library;
  mount::MountProcess mount;
};

TEST_F(System, ManyAndLargeAndVanishedPackages) {
  const std::string fits = ReadFile(folder / "MotorControllers/A.qal");
  for (int i = 10000; i < 20000; ++i)
    WriteFile(folder / "MotorControllers" / ("p" + std::to_string(i) + ".qal"), "");
  std::string large = fits;
  while (large.size() < (64u << 20)) large += std::string(998, ';') + "\r\n";
  WriteFile(folder / "MotorControllers/B.qal", large);
  StartWithMount();
  WalkTo(3);
  EXPECT_EQ(Items("lstFirmware").size(), 10002U);
  ClickRow("lstFirmware", 10001);
  Click("cmdStepFwd");
  EXPECT_THAT(Said(), ElementsAre("Ok !|No matching devices found in firmware file"));
  fs::remove(folder / "MotorControllers/A.qal");
  ClickRow("lstFirmware", 0);
  EXPECT_EQ(Text("txtFirmware"), "Error 1 : QAL File Not Found at Line 0");
  Click("cmdStepFwd");
  EXPECT_THAT(Said(), ElementsAre("Ok !|Error 1 : QAL File Not Found at Line 0"));
  ExpectAtRest();
  ClickRow("lstFirmware", 1);
  Click("cmdStepFwd");
  EXPECT_EQ(Step(), 4) << testing::PrintToString(Said());
}

TEST(Program, RunsWhereItFindsNoLibraryAndCanWriteNothing) {
  const TempFolder folder, start;
  fs::copy(TARNWICK_PROGRAM, folder / "Tarnwick");
  WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nDebugFilter10 = True\r\n");
  fs::permissions(folder.Path(), fs::perms{0555});
  fs::permissions(start.Path(), fs::perms::all);
  QProcess process;
  process.setWorkingDirectory(QString::fromStdString(start.Path()));
  process.setChildProcessModifier([] {  // Root, whom no mode stops, becomes nobody.
    if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(1);
  });
  process.start(QString::fromStdString(folder / "Tarnwick"), QStringList());
  const auto started = [&] {
    return ReadFile(start / "debugexe.txt").find("DomainDir") != std::string::npos;
  };
  EXPECT_TRUE(QTest::qWaitFor(started, 20000));
  EXPECT_FALSE(process.waitForFinished(300));
  process.kill();
  process.waitForFinished();
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 2);
  fs::permissions(folder.Path(), fs::perms::owner_all);
}

TEST(Program, OutlivesTheTerminalThatItWasStartedFrom) {
  const TempFolder folder;
  fs::copy(TARNWICK_PROGRAM, folder / "Tarnwick");
  std::array<int, 2> unread{};
  ASSERT_EQ(::pipe(unread.data()), 0);
  int terminal = -1;
  const pid_t process = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process == 0) {
    ::dup2(unread[1], STDERR_FILENO);
    for (const int end : {unread[0], unread[1], STDOUT_FILENO}) ::close(end);
    if (::chdir(folder.Path().c_str()) != 0) ::_exit(1);
    ::execl((folder / "Tarnwick").c_str(), "Tarnwick", nullptr);
    ::_exit(127);
  }
  for (const int end : unread) ::close(end);  // The window system's words now have no reader.
  int status = 0;
  const auto ended = [&] { return ::waitpid(process, &status, WNOHANG) != 0; };
  const auto started = [&] { return ReadFile(folder / "Tarnwick.log").find("start:") != std::string::npos; };
  EXPECT_TRUE(QTest::qWaitFor([&] { return started() || ended(); }, 20000));
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(process) + "/fd/1"), "/dev/null");
  ::close(terminal);
  EXPECT_FALSE(QTest::qWaitFor(ended, 500)) << status;
  ::kill(process, SIGTERM);
  EXPECT_TRUE(QTest::qWaitFor(ended, 5000)) << "Who is asked to end, ends.";
}

}  // namespace
}  // namespace tarnwick::test
