// What the four pages show, keep and ask of the link.
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QTimer>

#include "PagesTest.h"
#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "programmer/Progress.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"

namespace tarnwick::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class Pages : public PagesTest {};

struct KeeperDouble : awake::IKeeper {
  void Keep() override { ++held; }
  void LetGo() override { --held; }
  int held = 0;
};

TEST_F(Pages, OneOffersAccessoriesOnlyWhereTheSettingsSaySo) {
  Start();
  EXPECT_EQ(Label("Label1_0"), "Welcome to the Halcyrion\nMotor Control Update Program");
  EXPECT_EQ(
      Label("Label1_1"),
      "This program allows you to download new firmware from the Halcyrion website and update your motor "
      "control board or accessories with the latest firmware available.");
  EXPECT_EQ(Label("Label1_2"), "Press Next to continue");
  EXPECT_EQ(Label("Label2"), "Choose a Device");
  EXPECT_EQ(Find<QComboBox>("cboDevice").count(), 1);
  EXPECT_EQ(Find<QComboBox>("cboDevice").currentText(), QLatin1String("Motor Control Board"));
  WalkTo(2);
  EXPECT_EQ(gFirmwareDir, folder / "MotorControllers");
  gTypeOverride = true;
  Click("cmdStepBack");
  Find<QComboBox>("cboDevice").setCurrentText(QStringLiteral("Accessories"));
  WalkTo(2);
  EXPECT_EQ(gDeviceClass, 1);
  EXPECT_EQ(gDevices[2].Address, 19);
  EXPECT_EQ(gFirmwareDir, folder / "Accessories");
  EXPECT_TRUE(std::filesystem::is_directory(gFirmwareDir));
  Click("cmdStepBack");
  EXPECT_EQ(Find<QComboBox>("cboDevice").currentIndex(), 1);
  EXPECT_EQ(Find<QComboBox>("cboDevice").count(), 2);
}

TEST_F(Pages, TwoListsPortsWhenReachedForwardOnly) {
  Start();
  gComPort = "com5";
  WalkTo(2);
  auto& ports = Find<QComboBox>("cboComPort");
  EXPECT_EQ(ports.itemText(0), QLatin1String("None"));
  EXPECT_EQ(ports.currentText(), QLatin1String("COM5"));
  EXPECT_EQ(Label("Label1"), "Choose a COM port");
  EXPECT_EQ(
      Label("Label2"),
      "Make sure you choose the COM port that is attached to your telescope and that you are using the "
      "proper Programming cable.  The Halcyrion Hand Control should NOT be connected at this time, and "
      "the telescope should have just been powered ON.\n\nNote: Choose None if you are not connected to "
      "a telescope right now but would like to check for Web Updates on the Next screen.");
  WalkTo(3);
  EXPECT_EQ(gComPort, "COM5");
  std::filesystem::rename(folder / "ports/COM5", folder / "ports/com12");
  Calls();
  Click("cmdStepBack");
  EXPECT_EQ(ports.currentText(), QLatin1String("COM5"));
  Click("cmdStepBack");
  EXPECT_THAT(Calls(), ElementsAre("initSerial "));
  EXPECT_EQ(gComPort, "COM5");
  WalkTo(2);
  EXPECT_EQ(ports.currentText(), QLatin1String("None"));
  EXPECT_NE(ports.findText(QStringLiteral("COM12")), -1);
  EXPECT_EQ(ports.findText(QStringLiteral("COM5")), -1);
  Click("cmdStepFwd");
  Click("cmdStepBack");
  Click("cmdStepBack");
  EXPECT_EQ(gComPort, "");
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(Pages, TwoAddsPortsThatArePluggedInAtTheirPlaces) {
  std::filesystem::create_symlink("/dev/null", folder / "ports/COM12");
  Start();
  WalkTo(2);
  auto& ports = Find<QComboBox>("cboComPort");
  auto& watch = *ports.parent()->findChild<QTimer*>("watch");
  watch.setInterval(1);
  const auto have = [&](const char* port) { return ports.findText(QLatin1String(port)) >= 0; };
  ports.setCurrentText(QStringLiteral("COM12"));
  const int before = ports.count();
  std::filesystem::remove(folder / "ports/COM5");
  for (const char* come : {"COM16", "com11"})
    std::filesystem::create_symlink("/dev/zero", folder / "ports" / come);
  ASSERT_TRUE(QTest::qWaitFor([&] { return have("COM16") && have("COM11"); }));
  EXPECT_TRUE(have("COM5"));
  EXPECT_EQ(ports.count(), before + 2);
  EXPECT_EQ(ports.currentText(), QLatin1String("COM12"));
  EXPECT_EQ(ports.findText(QStringLiteral("COM11")) + 1, ports.findText(QStringLiteral("COM12")));
  EXPECT_TRUE(ports.toolTip().endsWith(QLatin1String("ports/COM12")));
  Click("cmdStepBack");
  EXPECT_FALSE(watch.isActive()) << "Nobody looks at the list.";
}

TEST_F(Pages, TwoTellsHowToGetTheRightToAPort) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
  const std::string device = ::ptsname(master);
  std::filesystem::create_symlink(device, folder / "ports/COM6");
  const uid_t self = ::geteuid();
  const group* const owner = ::getgrnam("tty");
  ASSERT_TRUE(self != 0 || ::chown(device.c_str(), self, owner->gr_gid) == 0);
  ASSERT_EQ(::chmod(device.c_str(), 0060), 0);
  std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
  ASSERT_TRUE(self != 0 || ::seteuid(65534) == 0) << "Root may open anything.";
  Start();
  WalkTo(2);
  auto& ports = Find<QComboBox>("cboComPort");
  EXPECT_EQ(OnView("lblRights"), nullptr);
  ports.setCurrentText(QStringLiteral("COM6"));
  const std::string rights =
      "You may not open this port yet. Become a member of the group tty with this command in a terminal, "
      "then log out and in again:\nsudo usermod -aG tty $USER";
  EXPECT_EQ(Label("lblRights"), rights);
  EXPECT_THAT(ports.toolTip().toStdString(), AllOf(HasSubstr("ports/COM6"), testing::EndsWith(rights)));
  ports.setCurrentText(QStringLiteral("COM5"));
  EXPECT_EQ(OnView("lblRights"), nullptr);
  EXPECT_EQ(::seteuid(self), 0);
  ::close(master);
}

TEST_F(Pages, ThreeListsPackagesInOrderAndShowsNoteOrHeader) {
  for (const char* name : {"b.QAL", "B.qal", "a.Qal", "C.qal"}) Put(name, PackageText(5, "5", kBoth));
  for (const char* name : {"A.qal.bak", "qal", "x.qa", "y.qall"}) Put(name, "");
  std::filesystem::create_directory(folder / "MotorControllers/folder.qal");
  Put("B.txt", "first\r\nlast");
  Put("C.qal", kBroken);
  Put("A.qal", PackageText(5, "5", kBoth) + "ModelName=Corvane\r\nFileDate=2024.03.05\r\nComments=Fine\r\n");
  const std::string foreign = "z\xE9.qal";  // No text in the system's own encoding.
  Put(foreign, PackageText(6, "5", kBoth));
  Start();
  WalkTo(3);
  EXPECT_THAT(Items("lstFirmware"), ElementsAre("A.qal", "B.qal", "C.qal", "a.Qal", "b.QAL", "z\u00E9.qal"));
  EXPECT_EQ(Selected("lstFirmware"), 0);
  EXPECT_EQ(Text("txtFirmware"), "Model: Corvane\nVersion: 4.15\nDate: 2024.03.05\nComments: Fine\n");
  EXPECT_EQ(gDevices[2].QalIndex, 2);
  EXPECT_THAT(Text("txtStatus"), HasSubstr("Device: AZM(RA) Motor\n    State: Running\n"));
  ClickRow("lstFirmware", 1);
  EXPECT_EQ(Text("txtFirmware"), "first\nlast\n");
  EXPECT_EQ(gQAL->RealFilename(), folder / "MotorControllers/A.qal");
  ClickRow("lstFirmware", 2);
  EXPECT_EQ(Text("txtFirmware"), kBrokenError);
  Key(Qt::Key_Down);
  EXPECT_EQ(gQAL->RealFilename(), folder / "MotorControllers/a.Qal");
  gQAL->LoadQALfile({});
  ClickRow("lstFirmware", 3);  // The same again is read again.
  EXPECT_FALSE(gQAL->ErrorsFound());
  ClickRow("lstFirmware", 5);
  EXPECT_EQ(gQAL->RealFilename(), folder / "MotorControllers" / foreign);
  EXPECT_EQ(gQAL->ModelNumber(), 6);
}

TEST_F(Pages, ThreeReadsTheDevicesAnewAndKeepsItsChoiceOnTheWayBack) {
  Put("B.qal", PackageText(5, "5", kBoth));
  link.serialMode = 2;
  Start();
  WalkTo(3);
  ClickRow("lstFirmware", 1);
  Calls();
  std::string shown;
  link.log = [&](const std::string& call) {
    if (call == "lockHc") shown = Text("txtStatus");
  };
  Click("cmdRefresh");
  link.log = {};
  EXPECT_EQ(shown, "Determining Status ...");
  EXPECT_THAT(Calls(), ElementsAre("getSerialMode", "lockHc", "getMcState 16", "getHwRev 16", "getModel 16",
                                   "getMcState 17", "getHwRev 17", "getModel 17"));
  WalkTo(4);
  EXPECT_EQ(Label("lblFirmware"), "QAL File: " + gQAL->Filename());
  Calls();
  Click("cmdRefresh");
  EXPECT_THAT(Calls(), Not(Contains("lockHc")));
  gDevices[1].HwRevBoot = 7;
  Azm().model = 6;
  Click("cmdStepBack");
  EXPECT_EQ(Calls().size(), 6U);
  EXPECT_EQ(gDevices[1].HwRevBoot, 0);
  EXPECT_THAT(Text("txtStatus"), HasSubstr("Brenmark RX"));
  EXPECT_EQ(Selected("lstFirmware"), 1);
  EXPECT_EQ(gQAL->RealFilename(), folder / "MotorControllers/B.qal");
  Click("cmdStepBack");
  Find<QComboBox>("cboComPort").setCurrentIndex(0);
  Click("cmdStepFwd");
  Calls();
  Click("cmdRefresh");
  EXPECT_THAT(Calls(), IsEmpty());
  EXPECT_THAT(Text("txtStatus"), StartsWith("No COM port specified!\n\nEXE Version: 2.2.4\n"));
}

TEST_F(Pages, FourListsTheDevicesOfThePackageAndChoosesNone) {
  Put("A.qal", PackageText(5, "5", {{"Alt", 17, CountedWords(7)}, {"Foc", 18, CountedWords(7)}}));
  Start();
  WalkTo(4);
  EXPECT_THAT(Items("lstDevices"), ElementsAre("All Devices", "ALT(DEC) Motor"));
  EXPECT_EQ(QApplication::focusWidget(), &Find("lstDevices"));
  EXPECT_EQ(Selected("lstDevices"), -1);
  for (const int row : {0, 1}) {
    Key(Qt::Key_Down);
    EXPECT_EQ(Selected("lstDevices"), row);
  }
  auto& progress = dynamic_cast<IProgress&>(*Wizard().PageHandle(4.0));
  for (const int row : {1, 0, 0}) {  // Also the one that is chosen already.
    progress.Label("Programming: 50%");
    ClickRow("lstDevices", row);
    EXPECT_EQ(Progress(), "");
  }
  Calls();
  Click("cmdProgram");
  EXPECT_THAT(Calls(), Not(Contains("startProgramming 16")));
  Wizard().StepTo(2.0);
  Wizard().StepTo(4.0);  // Not from the page before: what was chosen stays.
  EXPECT_EQ(Selected("lstDevices"), 0);
  Click("cmdStepBack");
  Click("cmdStepFwd");
  EXPECT_EQ(Selected("lstDevices"), -1);
}

/// What the page shows of a run: the terminate button's caption, and what is locked or raised.
std::string Face(Pages& t) {
  std::string face = "<" + t.Caption("cmdTerminate");
  if (t.Wizard().Frozen()) face += " frozen";
  if (!t.Live("cmdProgram") && !t.Live("cmdVerify") && !t.Live("cmdRefresh")) face += " off";
  if (gProgramming) face += " programming";
  if (gVerifying) face += " verifying";
  return face + ">";
}

TEST_F(Pages, FourRunsInOneOrder) {
  Start();
  WalkTo(4);
  ClickRow("lstDevices", 0);
  Alt().bootVersion = 1;
  std::vector<std::string> order;
  std::string face;
  const auto note = [&](const std::string& line) {
    if (std::exchange(face, Face(*this)) != face) order.push_back(face);
    const std::string name = line.substr(0, line.find(' '));
    if (name != "getDllVersion" && name != "sendData" && name != "pump" && name != "read")
      order.push_back(line);
    if (line == "box" && user.LastText().starts_with("Programming")) Azm().state = Alt().state = 1;  // Power.
  };
  const auto run = [&](const char* button) {
    user.log = link.log = note;
    Click(button);
    user.log = link.log = {};
    ExpectAtRest();
    EXPECT_EQ(QApplication::focusWidget(), &Find(button));
    return std::exchange(order, {});
  };
  const auto joined = [](std::initializer_list<std::vector<std::string>> parts) {
    std::vector<std::string> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  using Calls = std::vector<std::string>;
  const auto write = [](const std::string& to) {
    return Calls{"getHwRevFromBoot " + to, "getSerialMode",    "getMcState " + to,
                 "startProgramming " + to, "getMcState " + to, "endProgramming " + to};
  };
  const Calls refresh{"getMcState 16", "getHwRev 16", "getModel 16",
                      "getMcState 17", "getHwRev 17", "getModel 17"};
  EXPECT_EQ(run("cmdVerify"),
            joined({{"<Finish>", "<Finish frozen>", "<Cancel frozen off verifying>", "getSerialMode"},
                    {"<Finish frozen off>"},
                    refresh,
                    {"box", "<Finish>"}}));
  EXPECT_EQ(run("cmdProgram"),
            joined({{"<Finish frozen>", "<Cancel frozen off programming>"},
                    {"getMcState 16", "getHwRev 16", "getMcState 17", "getHwRev 17", "getSerialMode"},
                    {"getVersionFromBoot 16", "enterBoot 16"},
                    write("16"),
                    {"getVersionFromBoot 17", "enterBoot 17"},
                    write("17"),  // The boot package, then the package.
                    write("17"),
                    {"<Finish frozen off>"},
                    {"getMcState 16", "getHwRevFromBoot 16", "getVersionFromBoot 16"},
                    {"getMcState 17", "getHwRevFromBoot 17", "getVersionFromBoot 17"},
                    {"box"},
                    refresh,
                    {"<Finish>"}}));
  EXPECT_THAT(Text("txtStatus"), HasSubstr("State: Running\n"));
}

TEST_F(Pages, FourTouchesNothingWhenACheckFails) {
  Start();
  WalkTo(4);
  ClickRow("lstDevices", 0);
  Alt().hwRev = 6;
  Calls();
  Click("cmdProgram");
  EXPECT_THAT(
      Said(),
      ElementsAre("Ok !|[ALT(DEC) Motor] Hardware Revision doesn't match QAL file Hardware Revision"));
  EXPECT_THAT(Calls(), ElementsAre("getMcState 16", "getHwRev 16", "getMcState 17", "getHwRev 17",
                                   "getSerialMode", "getMcState 16", "getHwRev 16", "getModel 16",
                                   "getMcState 17", "getHwRev 17", "getModel 17"));
  ExpectAtRest();
  // The rule for 3.0 goes by the table and asks no device; alone such a device is programmed.
  Alt() = {.state = 1, .major = 3, .model = 1, .hwRev = 5, .bootHwRev = 5};
  gModelOverride = true;
  Click("cmdRefresh");
  Calls();
  Click("cmdProgram");
  EXPECT_THAT(Said(), ElementsAre("Ok !|Cannot Program more than one device at a time with V3.0"));
  EXPECT_EQ(Calls().front(), "getSerialMode");
  ClickRow("lstDevices", 2);
  Click("cmdProgram");
  EXPECT_THAT(Said(), ElementsAre(StartsWith("Ok i|Programming Complete")));
}

TEST_F(Pages, ThreeGoesOnOnlyWithThePackageThatItJudged) {
  Put("B.qal", PackageText(6, "5", kBoth));
  Start();
  WalkTo(3);
  bool clicked = false;
  onPump = [&] {  // A click that waited while the package was judged.
    if (gQAL->ErrorsFound() || Wizard().Frozen() || std::exchange(clicked, true)) return;
    ClickRow("lstFirmware", 1);
  };
  Click("cmdStepFwd");
  EXPECT_TRUE(clicked);
  EXPECT_EQ(Step(), 3);
  EXPECT_EQ(Selected("lstFirmware"), 1);
  ExpectAtRest();
}

TEST_F(Pages, FourKeepsTheComputerAwakeForTheLengthOfARun) {
  KeeperDouble keeper;
  Start();
  awake::Install(keeper);
  WalkTo(4);
  int pumpsHeld = 0;
  onPump = [&] {
    EXPECT_EQ(keeper.held == 1, gProgramming || gVerifying);
    pumpsHeld += keeper.held;
  };
  user.log = [&](const std::string& what) {
    EXPECT_TRUE(what != "box" || keeper.held == 0) << "The closing message may wait for long.";
  };
  ClickRow("lstDevices", 0);
  for (const char* const run : {"cmdVerify", "cmdProgram"}) {
    pumpsHeld = 0;
    Click(run);
    EXPECT_GT(pumpsHeld, 0) << run;
    EXPECT_EQ(Said().size(), 1U);
    EXPECT_EQ(keeper.held, 0);
  }
  onPump = {};
  awake::Uninstall();
}

}  // namespace
}  // namespace tarnwick::test
