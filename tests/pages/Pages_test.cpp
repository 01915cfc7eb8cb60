// What the four pages show, keep and ask of the link.
#include <QTimer>

#include "PagesTest.h"
#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "settings/Settings.h"
#include "platform/qt/Contrast.h"
#include "webupdate/PackageSignature.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Pages : public PagesTest {};

TEST_F(Pages, OneOffersAccessoriesOnlyWhereTheSettingsSaySo) {
  const auto firmwareOf = [this](const char* device) {
    Find<QComboBox>("cboDevice").setCurrentText(QLatin1String(device));
    WalkTo(3);
    Click("cmdStepBack");
    Click("cmdStepBack");
    return gFirmwareDir.filename();
  };
  Start();
  EXPECT_EQ(firmwareOf("Accessories"), "MotorControllers") << "Not offered.";
  gTypeOverride = true;
  Wizard().StepTo(1.0);
  EXPECT_EQ(firmwareOf("Accessories"), "Accessories");
  EXPECT_TRUE(std::filesystem::is_directory(gFirmwareDir));
  EXPECT_EQ(gDevices[2].Address, 19);
  EXPECT_EQ(Find<QComboBox>("cboDevice").currentIndex(), 1);
  std::filesystem::remove(gFirmwareDir);
  std::filesystem::create_symlink("nowhere", gFirmwareDir);
  EXPECT_EQ(firmwareOf("Accessories"), "Accessories") << "A folder that cannot be made is as an empty one.";
}

TEST_F(Pages, TwoTellsWhatIsKnownOfAPortThatGaveNoTelescope) {
  Start();
  WalkTo(2);
  Find<QComboBox>("cboComPort").setCurrentText("COM5");
  EXPECT_EQ(Find<QLabel>("lblDevice").text(), "/dev/null");
  link.openResult = -4;
  Click("cmdStepFwd");
  EXPECT_THAT(Said(), ElementsAre("Ok !|No Telescope found on COM5"));
  EXPECT_EQ(Find<QLabel>("lblKnown").text(),
            "Only our own bytes came back: two adapters joined, or a loop-back plug");
  EXPECT_EQ(Find<QLabel>("lblDevice").text(), "/dev/null");
  Find<QComboBox>("cboComPort").setCurrentText("None");
  EXPECT_FALSE(OnView("lblKnown")) << "Another port is chosen, of which nothing is known.";
  link.log = {};
}

TEST_F(Pages, TwoListsPortsWhenReachedForwardAndAddsWhatIsPluggedIn) {
  Start();
  gComPort = "com5";
  WalkTo(2);
  auto& ports = Find<QComboBox>("cboComPort");
  EXPECT_EQ(ports.itemText(0), QLatin1String("None"));
  EXPECT_EQ(ports.currentText(), QLatin1String("COM5"));
  WalkTo(3);
  std::filesystem::rename(folder / "ports/COM5", folder / "ports/com12");
  Calls();
  Click("cmdStepBack");
  EXPECT_EQ(ports.currentText(), QLatin1String("COM5"));
  Click("cmdStepBack");
  EXPECT_THAT(Calls(), ElementsAre("initSerial "));
  WalkTo(2);
  EXPECT_EQ(ports.currentText(), QLatin1String("None"));
  const auto place = [&](const char* port) { return ports.findText(QLatin1String(port)); };
  EXPECT_TRUE(place("COM12") > 0 && place("COM5") < 0);
  ports.setCurrentText(QStringLiteral("COM12"));
  ports.parent()->findChild<QTimer*>("watch")->setInterval(1);
  std::filesystem::remove(folder / "ports/com12");
  for (const char* come : {"COM16", "com4"})
    std::filesystem::create_symlink("/dev/zero", folder / "ports" / come);
  EXPECT_TRUE(QTest::qWaitFor([&] { return place("COM4") > 0 && place("COM16") > place("COM12"); }));
  EXPECT_LT(place("COM4"), place("COM12")) << "What was plugged in comes to its place, and what went stays.";
  EXPECT_EQ(ports.currentText(), QLatin1String("COM12"));
  WalkTo(3, "None");
  EXPECT_EQ(gComPort, "");
  EXPECT_THAT(Calls(), testing::IsEmpty());
}

TEST_F(Pages, ThreeListsPackagesInOrderAndShowsNoteOrHeader) {
  for (const char* name : {"b.QAL", "B.qal", "a.Qal"}) Put(name, PackageText(5, "5", kBoth));
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
  Find("lstFirmware").setFocus();
  Key(Qt::Key_Down);
  EXPECT_EQ(Text("txtFirmware"), "first\nlast\n");
  ClickRow("lstFirmware", 2);
  EXPECT_EQ(Text("txtFirmware"), kBrokenError);
  Key(Qt::Key_Down);
  EXPECT_EQ(gQAL->RealFilename(), folder / "MotorControllers/a.Qal");
  gQAL->LoadQALfile({});
  ClickRow("lstFirmware", 3);  // The same again is read again.
  EXPECT_FALSE(gQAL->ErrorsFound());
  ClickRow("lstFirmware", 5);
  EXPECT_EQ(gQAL->ModelNumber(), 6);
}

/// Whether each sign of page 3 stands out from its row, selected too, on paper and with a dark desktop.
void ExpectReadableSigns(QListWidget& list, int last) {
  for (const QColor& base : {QColor(Qt::white), QColor(30, 30, 30)}) {
    QPalette palette = list.palette();
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Text, base == QColor(Qt::white) ? Qt::black : Qt::white);
    list.setPalette(palette);
    for (const int row : {1, last}) {
      list.scrollToItem(list.item(row));
      const QRect place = list.visualItemRect(list.item(row));
      const QImage seen = list.viewport()->grab(place).toImage();
      const QColor ground = seen.pixelColor(1, 1);
      double best = 1;
      for (int x = 0; x < seen.height() && x < seen.width(); ++x) {
        for (int y = 2; y < seen.height() - 2; ++y)
          best = std::max(best, qt::Contrast(seen.pixelColor(x, y), ground));
      }
      EXPECT_GE(best, qt::kReadable) << row << " on " << base.name().toStdString();
    }
  }
  list.setPalette({});
}

TEST_F(Pages, ThreeSaysWhatFitsAndWhoSigned) {
  const KeyPair key = *MakeKeyPair(), other = *MakeKeyPair(), builtIn = *MakeKeyPair();
  TrustPackageKey(builtIn.open);
  WriteFile(folder / "Orion Club.pub", KeyText(key.open));
  WriteFile(folder / "none.pub", "no key");
  const std::string good = PackageText(5, "5", kBoth);
  std::string altered = SignPackage(good, key.secret);
  altered[altered.find("MODELNAME")] = 'm';
  const std::string doesNot = "The signature does not fit", fits = "Fits your mount",
                    unsignedOne = "Not signed";
  const struct {
    std::string text, fit, signature;
  } rows[] = {
      {good, fits, unsignedOne},
      {PackageText(6, "5", kBoth), "For another model: Brenmark RX; yours is Vendral Corvane", unsignedOne},
      {PackageText(99, "5", kBoth), "For another model: Unknown; yours is Vendral Corvane", unsignedOne},
      {PackageText(5, "6", kBoth), "For other hardware: revision 6", unsignedOne},
      {PackageText(5, "", kBoth), "For other hardware: it names no revision", unsignedOne},
      {PackageText(5, "5", {{"Foc", 18, CountedWords(3)}}), "For other devices", unsignedOne},
      {kBroken, "Cannot be used: Hex Line Too Short", unsignedOne},
      {SignPackage(good, key.secret), fits, "Signed by Orion Club"},
      {SignPackage(SignPackage(good, key.secret), builtIn.secret), fits, "Signed by Halcyrion"},
      {SignPackage(good, other.secret), fits, doesNot},
      {SignPackage(good, key.secret).substr(0, good.size() + 60), fits, doesNot},
      {altered, fits, doesNot},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i)
    Put(std::string(1, static_cast<char>('A' + i)) + ".qal", rows[i].text);
  Start();
  WalkTo(3);
  const auto signOf = [&](int row) {
    return Find<QListWidget>("lstFirmware")
        .item(row)
        ->data(Qt::AccessibleDescriptionRole)
        .toString()
        .toStdString();
  };
  const int last = static_cast<int>(std::size(rows)) - 1;
  EXPECT_TRUE(QTest::qWaitFor([&] { return !signOf(last).empty(); })) << "All are judged, chosen or not.";
  const std::string chosen = gQAL->RealFilename();
  EXPECT_EQ(chosen, folder / "MotorControllers/A.qal") << "To judge the others leaves the chosen one alone.";
  for (int row = 0; row <= last; ++row) {
    EXPECT_EQ(signOf(row), rows[row].fit);
    ClickRow("lstFirmware", row);
    EXPECT_EQ(Find<QLabel>("lblFit").text().toStdString(), rows[row].fit);
    EXPECT_EQ(Find<QLabel>("lblSignature").text().toStdString(), rows[row].signature);
  }
  ExpectReadableSigns(Find<QListWidget>("lstFirmware"), last);
  Click("cmdStepFwd");
  EXPECT_THAT(Said(), ElementsAre("NoYes X|The signature of this package does not fit. It may have been "
                                  "altered. Use it all the same?"));
  EXPECT_EQ(Step(), 3);
  user.answers = {ui::Answer::Yes};
  Click("cmdStepFwd");
  EXPECT_EQ(Step(), 4);
}

TEST_F(Pages, ThreeJudgesTheSignatureOfWhatItLoads) {
  const KeyPair key = *MakeKeyPair();
  TrustPackageKey(key.open);
  const std::string good = PackageText(5, "5", kBoth), altered = SignPackage(good, MakeKeyPair()->secret);
  Put("A.qal", SignPackage(good, key.secret));
  Start();
  WalkTo(3);
  Put("A.qal", good);
  Click("cmdStepFwd");
  EXPECT_EQ(Find<QLabel>("lblSignature").text().toStdString(), "Not signed") << "No other file's line.";
  EXPECT_EQ(Step(), 3);
  Put("A.qal", altered);
  user.answers = {ui::Answer::Yes};
  user.log = [&](const std::string& what) {
    if (what == "box") Put("A.qal", PackageText(5, "5", {{"Azm", 16, CountedWords(7)}}));
  };
  Click("cmdStepFwd");
  user.log = nullptr;
  EXPECT_EQ(gQAL->Identity().Size, altered.size()) << "What was asked about goes on, not what came meanwhile.";
  EXPECT_EQ(Step(), 4);
}

TEST_F(Pages, ThreeSaysWhereTheMountCannotTell) {
  Start();
  WalkTo(3);
  for (ScriptedDevice* device : {&Azm(), &Alt()}) device->state = 0;
  Click("cmdRefresh");
  EXPECT_EQ(Find<QLabel>("lblFit").text(), "No mount to compare it with");
  for (ScriptedDevice* device : {&Azm(), &Alt()}) device->state = 2;
  Click("cmdRefresh");
  EXPECT_EQ(Find<QLabel>("lblFit").text(),
            "Your mount cannot tell its model; the package is for Vendral Corvane");
}

TEST_F(Pages, ThreeReadsTheDevicesAnewAndKeepsItsChoiceOnTheWayBack) {
  Put("B.qal", PackageText(5, "5", kBoth));
  link.serialMode = 2;
  Start();
  WalkTo(3);
  ClickRow("lstFirmware", 1);
  Calls();
  Click("cmdRefresh");
  EXPECT_THAT(Calls(), ElementsAre("getSerialMode", "lockHc", "getMcState 16", "getHwRev 16", "getModel 16",
                                   "getMcState 17", "getHwRev 17", "getModel 17"));
  WalkTo(4);
  gDevices[1].HwRevBoot = 7;
  Azm().model = 6;
  Click("cmdStepBack");
  EXPECT_EQ(gDevices[1].HwRevBoot, 0);
  EXPECT_THAT(Text("txtStatus"), HasSubstr("Brenmark RX"));
  EXPECT_EQ(Selected("lstFirmware"), 1);
  EXPECT_EQ(Caption("cmdTerminate"), "Exit");
}

TEST_F(Pages, FourListsTheDevicesOfThePackageAndChoosesNone) {
  Put("A.qal", PackageText(5, "5", {{"Alt", 17, CountedWords(7)}, {"Foc", 18, CountedWords(7)}}));
  Start();
  WalkTo(4);
  EXPECT_THAT(Items("lstDevices"), ElementsAre("All Devices", "ALT(DEC) Motor"));
  EXPECT_EQ(Selected("lstDevices"), -1);
  for (const int row : {0, 1}) {  // The focus is on the list.
    Key(Qt::Key_Down);
    EXPECT_EQ(Selected("lstDevices"), row);
  }
  ClickRow("lstDevices", 0);
  Calls();
  Click("cmdProgram");
  EXPECT_THAT(Calls(), testing::Not(testing::Contains("startProgramming 16")));
  Click("cmdStepBack");
  Click("cmdStepFwd");
  EXPECT_EQ(Selected("lstDevices"), -1);
}

/// What was on view of a control when it was painted last.
struct Painted : QObject {
  using Text = std::function<QString()>;
  Painted(QWidget& control, Text read) : text(std::move(read)) { control.installEventFilter(this); }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) last = text().toStdString();
    return false;
  }
  const Text text;
  std::string last;
};

TEST_F(Pages, WhatTakesTheMountLongIsPaintedBeforeTheCall) {
  std::map<std::string, std::string> during;
  const auto watch = [&](const Painted& painted) {
    link.log = [&](const std::string& call) { during.try_emplace(call, painted.last); };
  };
  Start();
  WalkTo(2);
  auto& device = Find<QLabel>("lblDevice");
  const Painted opening(device, [&] { return device.text(); });
  Find<QComboBox>("cboComPort").setCurrentText("COM5");
  watch(opening);
  Click("cmdStepFwd");
  EXPECT_EQ(during["initSerial COM5"], "Asking the mount ...");
  WalkTo(4);
  auto& report = Find<QPlainTextEdit>("txtStatus");
  const Painted asking(*report.viewport(), [&] { return report.toPlainText(); });
  during.clear();
  watch(asking);
  Click("cmdRefresh");
  EXPECT_EQ(during["getMcState 16"], "Determining Status ...");
  auto& bar = Find("progress");
  const Painted running(bar, [&] { return bar.accessibleDescription(); });
  ClickRow("lstDevices", 1);
  watch(running);
  Click("cmdProgram");
  EXPECT_THAT(during["startProgramming 16"], testing::EndsWith(" : 0%, erasing ..."));
  EXPECT_THAT(during["sendData 16"], testing::EndsWith(" : 0%"));
  EXPECT_THAT(during["endProgramming 16"], testing::EndsWith("%, checking ..."));
  link.log = {};
}

}  // namespace
}  // namespace tarnwick::test
