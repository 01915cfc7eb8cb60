// The real program over the real link library and the mount's process, in bad luck.
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QProcess>

#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "mount/MountProcess.h"
#include "support/PackageText.h"
#include "support/ProgramTest.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

constexpr std::int32_t kAzimuth = 16;

class System : public ProgramTest {
 public:
  System() {
    fs::copy(TARNWICK_LIBRARY, folder / "Tarnwick.so");
    const PackageDevice azm{"Azm", kAzimuth, CountedWords(51), "0402"};
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

TEST_F(System, ADeviceThatFallsSilentInARunGivesThatStepsMessageAndLeavesTheOther) {
  WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nBlockOverride = True\r\n");
  StartWithMount();
  WalkTo(4);
  ClickRow("lstDevices", 0);
  const char* const kFirst = "Programming: Azm : 0%";
  const struct {
    const char* button;
    const char* progress;  ///< Falls silent when this shows ...
    int round;  ///< ... for the nth round of events; 0 before the click, -1 at the question for blocks.
    const char* said;  ///< The first line of each box.
  } kRows[] = {
      {"cmdVerify", "", 0, "Ok !|AZM(RA) Motor: Verify not supported for this version\n"},
      {"cmdVerify", "Verifying: Azm : 0%", 1,
       "RetryCancel !|Error Verifying Data at Address: 0\nOk !|Verify Cancelled by User\n"},
      {"cmdProgram", "", 0,
       "YesNo !|[AZM(RA) Motor] Warning: Motor Controller model can not be determined.\n"
       "Ok !|No response from MC\n"},
      {"cmdProgram", kFirst, 1, "Ok !|Unable to enter boot.\n"},
      {"cmdProgram", kFirst, -1, "Ok !|Unable to start programming.\n"},
      {"cmdProgram", kFirst, 3,
       "YesNo X|An Error occurred Programming Data at Address: 0\nOk !|Programming Cancelled by User\n"},
      {"cmdProgram", "Programming: Azm : 98%", 2, "Ok !|Unable to end programming.\n"}};
  for (const auto& row : kRows) {
    const auto silence = [&] { mount.State(kAzimuth, "silent"); };
    if (row.round == 0) silence();
    if (row.round < 0) user.onInput = silence;
    int rounds = 0;
    onPump = [&] {
      if (row.round > 0 && Progress() == row.progress && ++rounds == row.round) silence();
    };
    user.log = [&](const std::string& line) {
      if (line == "box") mount.State(kAzimuth, "running");  // So that the rest costs no time.
    };
    user.inputAnswers = {"2"};
    user.answers = {row.round == 0 ? ui::Answer::Yes : ui::Answer::No};
    Click(row.button);
    onPump = user.onInput = {};
    user.log = {};
    std::string said;
    for (const std::string& box : Said()) said += box.substr(0, box.find('\r')) + "\n";
    EXPECT_EQ(said, row.said);
    EXPECT_EQ(gDevices[2].State, McState::Running) << "The other device is left alone.";
    ExpectAtRest();
  }
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
