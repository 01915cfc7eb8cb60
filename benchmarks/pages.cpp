// What the program's own side of long work costs, with its window open and a link that answers at
// once: a block written, a word verified, a package listed, loaded and shown. Rounds, blocks and words
// are told in processor time, since nothing waits in them.
#include <benchmark/benchmark.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QListWidget>
#include <QTest>
#include <ctime>

#include "app/App.h"
#include "firmware/QALclass.h"
#include "firmware/QalWriter.h"
#include "platform/program.h"
#include "settings/Settings.h"
#include "support/LinkDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "wizard/WizardWindow.h"
#include "wizard/modWizard.h"

namespace tarnwick::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kMotors[] = {16, 17};
/// Words of the image for runs: few enough that each display of progress changes all that it shows.
constexpr std::int32_t kWords = 4096;
/// Packages of 24 KB in a full folder.
constexpr int kMany = 2000;
/// Words that make a package of 64 KB.
constexpr std::int32_t kLargeWords = 11648;

/// Both bytes of a word; never those of a blank one.
std::uint8_t ByteAt(std::int32_t word) {
  return static_cast<std::uint8_t>(word / 8 % 50 + 1);
}

/// A package for both motors whose image has `words` words.
std::string PackageOf(std::int32_t words) {
  std::string records;
  for (std::int32_t first = 0; first < words; first += 8) {
    std::vector<std::uint8_t> bytes(16, ByteAt(first));
    records += QalHexLine(static_cast<std::uint16_t>(first * 2), bytes);
  }
  return QalHeaderText({.FileVersion = "1.2",
                        .Filename = "bench.qal",
                        .FileDate = "2024.03.05",
                        .Comments = "For figures",
                        .ModelNumber = 14,
                        .ModelName = "CORVANEM",
                        .HwRev = "5",
                        .Devices = {"AZM MOTOR, 16, MC_0512", "ALT MOTOR, 17, MC_0512"}}) +
         QalBlock("MC_0512", records);
}

/// The program with its window open, and the devices of `kMotors` behind an instant link.
class Desk {
 public:
  explicit Desk(QApplication& application) {
    fs::create_directories(mHome / "ports");
    fs::create_symlink("/dev/null", mHome / "ports/COM5");
    Put(mSmall, PackageOf(kWords));
    Put(mLarge, PackageOf(kLargeWords));
    ConnectDevices();
    fs::current_path(mHome.Path());
    program::Set({mHome.Path(), "Tarnwick", 1, 0, 0});
    mApp = std::make_unique<App>(application);
    mUser = std::make_unique<test::UserDouble>();
    mUser->onPump = [] { QCoreApplication::processEvents(); };
    mUser->log = [this](const std::string& call) {
      if (call == "box") PowerOn();
    };
    mApp->Start();
    (void)QTest::qWaitForWindowExposed(&mApp->Window());
    Click("cmdStepFwd");
    Find<QComboBox>("cboComPort").setCurrentIndex(1);
    Click("cmdStepFwd");
  }

  /// Lists the packages of a folder on the third page; the first one is loaded and shown.
  void ShowPackages(const fs::path& folder) {
    CWizard& wizard = gController->WizardHandle();
    if (wizard.CurrentStep() != 3) wizard.CurrentStep(3.0);
    gFirmwareDir = folder;
    wizard.PageHandle(3.0)->BeforePageShow(wizard, 2);
    QCoreApplication::processEvents();
  }

  /// The fourth page, with the small package and all devices chosen.
  void ChooseAll() {
    ShowPackages(mSmall);
    Click("cmdStepFwd");
    Find<QListWidget>("lstDevices").setCurrentRow(0);
    QCoreApplication::processEvents();
  }

  /// Both devices run again, as after the power cycle that the closing box of a run asks for.
  void PowerOn() {
    for (const std::int32_t address : kMotors) mLink.devices[address].state = 1;
  }

  template <class Widget>
  Widget& Find(const char* name) {
    return *mApp->Window().findChild<Widget*>(QLatin1String(name));
  }
  void Click(const char* name) { Find<QAbstractButton>(name).click(); }

  test::UserDouble& User() { return *mUser; }
  const fs::path& Large() const { return mLarge; }

 private:
  static void Put(const fs::path& folder, const std::string& package) {
    fs::create_directories(folder);
    test::WriteFile(folder / "bench.qal", package);
  }

  /// Devices that run what is in the small package.
  void ConnectDevices() {
    mLink.logTransfers = false;
    test::ScriptedDevice device;
    device.major = 5;
    device.minor = 12;
    device.model = 14;
    device.hwRev = 5;
    for (std::int32_t word = 0; word < kWords; ++word) device.memory[word] = ByteAt(word) * 0x101;
    device.memory[0xFFFC] = 0;  // tells that memory can be read at all
    for (const std::int32_t address : kMotors) mLink.devices[address] = device;
  }

  test::TempFolder mHome;
  const fs::path mSmall = mHome / "MotorControllers";
  const fs::path mLarge = mHome / "Large";
  test::LinkDouble mLink;
  std::unique_ptr<App> mApp;
  std::unique_ptr<test::UserDouble> mUser;
};

void IdleRound(benchmark::State& state, Desk& desk) {
  desk.ChooseAll();
  QTest::qWait(50);
  for ([[maybe_unused]] auto _ : state) ui::PumpEvents();
}

/// Processor time of a whole run by the button `name`, shared out over its `parts`. It has to end with the
/// box `last`.
void WholeRun(benchmark::State& state, Desk& desk, const char* name, std::string_view last, int parts) {
  desk.ChooseAll();
  for ([[maybe_unused]] auto _ : state) {
    desk.User().boxes.clear();
    const std::clock_t start = std::clock();
    desk.Click(name);
    state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / parts);
    if (!desk.User().LastBox().starts_with(last)) return state.SkipWithError(desk.User().LastBox().c_str());
  }
}

void Block(benchmark::State& state, Desk& desk) {
  WholeRun(state, desk, "cmdProgram", "Ok i|Programming Complete", 2 * kWords / 2);  // of two words each
}

void Word(benchmark::State& state, Desk& desk) {
  WholeRun(state, desk, "cmdVerify", "Ok i|Contents are Identical", 2 * kWords);
}

void Package(benchmark::State& state, Desk& desk) {
  for ([[maybe_unused]] auto _ : state) desk.ShowPackages(desk.Large());
  if (gQAL->ErrorsFound() || gQAL->DeviceWords(1) != kLargeWords - 1)
    state.SkipWithError("the package was not loaded");
}

/// From the page with so many packages to the sign in front of the last one.
void Judged(benchmark::State& state, Desk& desk) {
  test::TempFolder folder;
  for (int i = 0; i < kMany; ++i) test::WriteFile(folder / (std::to_string(i) + ".qal"), PackageOf(kWords));
  for ([[maybe_unused]] auto _ : state) {
    desk.ShowPackages(folder.Path());
    const auto& list = desk.Find<QListWidget>("lstFirmware");
    while (list.item(kMany - 1)->data(Qt::AccessibleDescriptionRole).isNull())
      QCoreApplication::processEvents();
  }
}

/// The same page until it can be used.
void Listed(benchmark::State& state, Desk& desk) {
  test::TempFolder folder;
  for (int i = 0; i < kMany; ++i) test::WriteFile(folder / (std::to_string(i) + ".qal"), PackageOf(kWords));
  for ([[maybe_unused]] auto _ : state) desk.ShowPackages(folder.Path());
}

}  // namespace
}  // namespace tarnwick::bench

int main(int argc, char* argv[]) {
  using namespace tarnwick::bench;
  QApplication application(argc, argv);
  Desk desk(application);
  const auto add = [&](const char* name, auto* run) {
    return benchmark::RegisterBenchmark(name, [&desk, run](benchmark::State& state) { run(state, desk); });
  };
  add("idle-round", IdleRound);
  add("block", Block)->UseManualTime()->Iterations(4);
  add("word", Word)->UseManualTime()->Iterations(4);
  add("package", Package)->UseRealTime();
  add("judged", Judged)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);
  add("many", Listed)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
