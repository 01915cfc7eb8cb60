// Every message of the pages, brought up through the window. After each the page can be used.
#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QUrl>

#include "PagesTest.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"

namespace tarnwick::test {
namespace {

using Boxes = std::vector<std::string>;

class Messages : public PagesTest {
 public:
  /// A press of Next is refused with `boxes`, and so is the next one.
  void Refused(const Boxes& boxes) {
    const int step = Step();
    for (int press = 1; press <= 2; ++press) {
      Click("cmdStepFwd");
      EXPECT_EQ(Said(), boxes);
      EXPECT_EQ(Step(), step) << testing::PrintToString(boxes);
      ExpectAtRest();
    }
  }
  /// As `Refused` on the port page; `calls` are those behind the one that opens the port, devices left out.
  void NotConnected(const Boxes& boxes, const std::string& calls) {
    Refused(boxes);
    std::string made;
    for (const std::string& call : Calls())
      made += call.starts_with("get") && call != "getSerialMode" ? "" : call + ";";
    EXPECT_EQ(made, "initSerial COM5;" + calls + "initSerial COM5;" + calls);
  }
  /// The button, with that row of the list chosen (-1: none yet), brings up `boxes`.
  void Run(const char* button, int row, const Boxes& boxes) {
    if (row >= 0) ClickRow("lstDevices", row);
    Click(button);
    EXPECT_EQ(Said(), boxes);
    ExpectAtRest();
  }
};

TEST_F(Messages, OfTheConnection) {
  Start();
  WalkTo(2);
  Find<QComboBox>("cboComPort").setCurrentText(QStringLiteral("COM5"));
  const std::string none = "Ok !|No Telescope found on COM5";
  for (const auto& [result, boxes] : std::map<std::int32_t, Boxes>{
           {-9, {}}, {-8, {none}}, {-2, {none}}, {-1, {"Ok !|Error Opening COM5"}}, {1, {}}}) {
    link.openResult = result;
    NotConnected(boxes, "");
  }
  link.openResult = link.skelmirraResult = 0;
  link.serialMode = 2;
  NotConnected({"Ok !|Tarnwick should not be connected to the Skelmirra virtual port.\r\nMake a direction "
                "connection to a real hand control instead."},
               "getSerialMode;testSkelmirra;initSerial ;");
  link.skelmirraResult = link.upgradeSupportResult = 1;
  NotConnected({"Ok !|Hand control firmware does not support upgrade interface.\r\nUse your mount's PC Port "
                "or update the hand control to the latest version."},
               "getSerialMode;testSkelmirra;testUpgradeSupport;initSerial ;");
  link.upgradeSupportResult = Azm().state = Alt().state = 0;
  const std::string through = "getSerialMode;testSkelmirra;testUpgradeSupport;lockHc;";
  NotConnected({"Ok !|Error - No Devices found on COM5"}, through + "initSerial ;");
  const Boxes tooOld{
      "Ok X|Error - Version of Motor Controller does not support Upgrading!\r\n\r\nContact Halcyrion for a "
      "replacement Motor Controller Board"};
  Azm() = {.state = 1, .major = 2, .minor = 99, .model = 1};
  NotConnected(tooOld, through);
  // Not too old: version not known, exactly 3, another model. One device that answers is enough.
  for (const auto& [major, model] : {std::pair{0, 1}, {3, 1}, {2, 2}}) {
    Azm() = {.state = 1, .major = major, .model = model};
    Click("cmdStepFwd");
    EXPECT_EQ(Step(), 3) << major << " " << model;
    Click("cmdStepBack");
  }
  EXPECT_EQ(Said(), Boxes());
}

TEST_F(Messages, OfTheFirmwarePage) {
  Start();
  WalkTo(3, "None");
  Refused({"Ok !|No COM port was specified!"});
  Click("cmdStepBack");
  WalkTo(3);
  const std::map<std::string, std::string> packages{
      {PackageText(6, "5", kBoth), "QAL file Model doesn't match Model on Motor Controller!"},
      {PackageText(5, "6", kBoth), "QAL file HwRev doesn't match Model on Motor Controller!"},
      {kBroken, kBrokenError}};
  for (const auto& [package, text] : packages) {
    Put("A.qal", package);
    Refused({"Ok !|" + text});
  }
  ClickRow("lstFirmware", 0, Qt::ControlModifier);
  Refused({"Ok !|Please choose a firmware file"});
  Click("cmdStepBack");
  std::filesystem::remove(folder / "MotorControllers/A.qal");
  WalkTo(3);
  Refused(
      {"Ok !|There are no firmware files available.\r\nPlease use Web Updates to download new firmware."});
  Click("cmdStepBack");
  Put("A.qal", PackageText(5, "5", kBoth));
  Azm().state = Alt().state = 2;
  WalkTo(3);
  user.answers = {ui::Answer::No};
  Click("cmdStepFwd");
  EXPECT_EQ(Step(), 3);
  WalkTo(4);  // Yes this time.
  EXPECT_EQ(Said().size(), 2U);
}

TEST_F(Messages, OfTheProgrammingPage) {
  Start();
  WalkTo(4);
  for (const char* const button : {"cmdProgram", "cmdVerify"})
    Run(button, -1, {"Ok !|Please choose a Device"});
  Alt().memory[3] = 1;
  Run("cmdVerify", 0, {"Ok !|Found Difference at Address: 3\r\n\r\nValue of 1 should be 8451"});
  Alt().memory.erase(3);
  const std::string failed = "RetryCancel !|Error Verifying Data at Address: 3";
  user.answers = {ui::Answer::Retry, ui::Answer::Cancel};
  Run("cmdVerify", 2, {failed, failed, "Ok !|Verify Cancelled by User"});
  onPump = [this] {
    if (!gVerifying) return;
    EXPECT_EQ(Caption("cmdTerminate"), "Cancel");
    window.close();
  };
  Run("cmdVerify", 0, {"Ok !|Verify cancelled by user"});
  onPump = {};
  Azm().minor = 14;
  Click("cmdRefresh");
  Run("cmdVerify", 0, {"Ok !|AZM(RA) Motor: Cannot Verify if Version Different!"});
  Azm().state = 2;
  Click("cmdRefresh");
  Run("cmdVerify", 1, {"Ok !|AZM(RA) Motor: Verify unsupported when firmware in State: Boot Mode"});
  Alt() = {.state = 1, .major = 3, .model = 1, .hwRev = 5, .bootHwRev = 5};
  gModelOverride = true;
  Click("cmdRefresh");
  Run("cmdProgram", 0, {"Ok !|Cannot Program more than one device at a time with V3.0"});
}

TEST_F(Messages, ThreeTakesPackagesThatAreDroppedAndAsksBeforeItReplaces) {
  Start();
  WalkTo(3);
  const TempFolder stick;
  const std::string other = PackageText(6, "5", kBoth);
  const auto drop = [&](const std::string& name) {
    WriteFile(stick / name, other);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString((stick / name).string()))});
    QWidget& page = *Find("lstFirmware").parentWidget();
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&page, &enter);
    QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&page, &event);
    QCoreApplication::processEvents();
    return Find<QListWidget>("lstFirmware").selectedItems().front()->text();
  };
  EXPECT_EQ(drop("New.qal"), QStringLiteral("New.qal"));
  user.answers = {ui::Answer::No};
  drop("A.qal");
  EXPECT_THAT(Said(), testing::ElementsAre("YesNo ?|A.qal is in your folder already.\r\nReplace it?"));
  EXPECT_EQ(ReadFile(folder / "MotorControllers/A.qal"), PackageText(5, "5", kBoth));
  drop("A.qal");
  EXPECT_EQ(ReadFile(folder / "MotorControllers/A.qal"), other);
  Wizard().Frozen(true);
  EXPECT_EQ(drop("Late.qal"), QStringLiteral("A.qal"));
  Wizard().Frozen(false);
}

}  // namespace
}  // namespace tarnwick::test
