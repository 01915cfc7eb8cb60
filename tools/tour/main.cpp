// The tour: a whole visit of the program, from the first page to a written mount, by key and mouse.
//
//   tarnwick-tour [--dark] [--keyboard] [--site CONFIGURATION] DIR
//
// --dark shows it on a dark desktop, --keyboard plays it without the mouse, which then must not be seen.
// Leaves a picture of every page, of a run half done and of each box in DIR, and "tour.txt" with
// what was asked and answered. With the sample update site, which nginx serves by CONFIGURATION on a
// loopback that has its name, a package is fetched and removed on the way. Exits 0 only when the memory that
// the simulated mount itself dumps equals the package, word by word, and the report says so.
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QPalette>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <filesystem>
#include <iostream>
#include <span>

#include "BadLuckScenes.h"
#include "Director.h"
#include "WebScenes.h"
#include "app/App.h"
#include "firmware/QALclass.h"
#include "mount/MountProcess.h"
#include "platform/cli.h"
#include "platform/program.h"
#include "platform/text.h"
#include "wizard/WizardWindow.h"

namespace tarnwick::tour {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPort = "COM5";
constexpr std::int32_t kAzimuth = 16;
constexpr std::int32_t kAltitude = 17;

/// The tour's own copy of the portable folder, so that the user's settings stay as they are.
fs::path CopyPortable(const fs::path& from, const fs::path& to) {
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::skip_symlinks);
  fs::remove_all(to / "ports");
  fs::create_directory(to / "ports");
  fs::remove(to / "Tarnwick.ini");
  return to;
}

bool MemoryEquals(const QALclass& package, std::int32_t device, const std::vector<std::int32_t>& memory) {
  const std::int32_t last = package.DeviceWords(device);
  if (static_cast<std::int32_t>(memory.size()) <= last) return false;
  for (std::int32_t word = 0; word <= last; ++word) {
    const std::int32_t expected =
        *package.DeviceHiByte(device, word) * 256 + *package.DeviceLoByte(device, word);
    if (memory[static_cast<std::size_t>(word)] != expected) return false;
  }
  return true;
}

/// A dark desktop, as a system theme would hand it to the program.
void ApplyDarkPalette() {
  QPalette dark(QColor(53, 56, 62), QColor(42, 45, 50));
  dark.setColor(QPalette::Base, QColor(30, 32, 36));
  dark.setColor(QPalette::Highlight, QColor(47, 111, 179));
  QApplication::setPalette(dark);
}

std::string Report(Director& director) {
  return director.Find<QPlainTextEdit>("txtStatus").toPlainText().toStdString();
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class Tour {
 public:
  /// Without a `site` nothing is fetched.
  Tour(Director& director, MountProcess& mount, SampleSite* site, const fs::path& package)
      : mDirector(director),
        mMount(mount),
        mSite(site),
        mFolder(package.parent_path()),
        mPackageName(package.filename().string()) {
    mPackage.LoadQALfile(package);
  }

  void Rehearse() {
    ChoosePort();
    if (mSite != nullptr) {
      RehearseWebUpdate(mDirector, *mSite, mFolder);
    } else {
      mDirector.Note("skipped the web update: there is no sample site");
    }
    ChoosePackage();
    Program();
    Verify();
    LoseCableInRuns(mDirector, mMount, [this] { CheckMemory(); });
    FindDifference();
    LoseCableBeforeOpening(mDirector, mMount);
    Leave();
  }

 private:
  void ChoosePort() {
    mDirector.Scene([this] {
      mDirector.Picture("page-1");
      mDirector.Press("cmdStepFwd");
    });
    mDirector.Scene([this] {
      auto& ports = mDirector.Find<QComboBox>("cboComPort");
      for (int i = 0; i < ports.count() && ports.currentText() != QLatin1String(kPort); ++i) {
        mDirector.Key(Qt::Key_Down);
      }
      mDirector.Check(ports.currentText() == QLatin1String(kPort),
                      "the simulated mount's port is in the list");
      mDirector.Picture("page-2");
      mDirector.Key(Qt::Key_Right, Qt::AltModifier);
    });
  }

  void ChoosePackage() {
    mDirector.Scene([this] { mDirector.Choose("lstFirmware", QString::fromStdString(mPackageName)); });
    mDirector.Scene([this] {
      mDirector.Check(CountOf(Report(mDirector), "State: Running") == 2, "both controllers run before");
      mDirector.Picture("page-3");
      mDirector.Key(Qt::Key_Return);
    });
  }

  void Program() {
    mDirector.Scene([this] {
      mDirector.Choose("lstDevices", QStringLiteral("All Devices"));
      mDirector.Picture("page-4");
      for (const char* const picture : {"boot-loader-1", "boot-loader-2"}) {
        mDirector.Expect({"Your BootLoader on this device needs to be upgraded", QMessageBox::Yes, picture});
      }
      mDirector.Expect(
          {"Programming Complete", QMessageBox::Ok, "complete", [this] { mMount.CyclePower(); }});
      mDirector.Press("cmdProgram");
    });
    mDirector.Scene([this] {
      const std::string report = Report(mDirector);
      mDirector.Note(report);
      const std::string version = "Version: " + text::Fixed2(mPackage.DeviceVersion(1)) + "\n";
      mDirector.Check(CountOf(report, "State: Running") == 2, "both controllers run afterwards");
      mDirector.Check(CountOf(report, version) == 2, "both report the new version");
      CheckMemory();
      mDirector.Check(mDirector.Pictured("run-half-done"), "the run was pictured half done");
      mDirector.Picture("page-4-done");
    });
  }

  void CheckMemory() {
    mDirector.Check(MemoryEquals(mPackage, 1, mMount.Dump(kAzimuth)),
                    "the first controller's memory is the package");
    mDirector.Check(MemoryEquals(mPackage, 2, mMount.Dump(kAltitude)),
                    "the second controller's memory is the package");
  }

  void Verify() {
    mDirector.Scene([this] {
      mDirector.Expect({"Contents are Identical", QMessageBox::Ok, "identical"});
      mDirector.Press("cmdVerify");
    });
  }

  void FindDifference() {
    mDirector.Scene([this] {
      mMount.Poke(kAltitude, 300, 0x0123);
      mDirector.Expect(
          {"Found Difference at Address: 300\n\nValue of 291 should be ", QMessageBox::Ok, "difference"});
      mDirector.Press("cmdVerify");
    });
  }

  void Leave() {
    mDirector.Scene([this] {
      mDirector.Expect({"Are you sure you want to Exit the program?", QMessageBox::Yes, "exit"});
      mDirector.Press("cmdTerminate");
    });
  }

  Director& mDirector;
  MountProcess& mMount;
  SampleSite* mSite;
  fs::path mFolder;
  std::string mPackageName;
  QALclass mPackage;
};

/// `siteConfiguration` is empty where there is no site.
int Run(QApplication& application, const fs::path& folder, Means means, const QString& siteConfiguration) {
  const fs::path binaries = fs::read_symlink("/proc/self/exe").parent_path();
  QTemporaryDir scratch;
  const fs::path home =
      CopyPortable(binaries.parent_path() / "portable", fs::path(scratch.path().toStdString()) / "Tarnwick");
  program::Set({home, "Tarnwick", program::This().major, program::This().minor, program::This().revision});
  fs::current_path(scratch.path().toStdString());

  MountProcess mount;
  if (!mount.Start(binaries / "tarnwick-mount", home / "ports" / kPort,
                   {"--model", "5", "--revision", "2", "--old-boot"})) {
    std::cerr << "The simulated mount did not start.\n";
    return 1;
  }

  App app(application);
  Director director(app.Window(), folder, means);
  const InPlace<program::Ending> ending{program::Ending{[&director] { director.Curtain(); }}};
  SampleSite site(siteConfiguration, QString::fromStdString(binaries.parent_path().string()));
  Tour tour(director, mount, siteConfiguration.isEmpty() ? nullptr : &site,
            home / "MotorControllers" / TARNWICK_TOUR_PACKAGE);
  tour.Rehearse();
  app.Start();
  const bool played = director.Play();
  std::error_code unsaid;
  fs::copy_file(home / "Tarnwick.log", folder / "Tarnwick.log", fs::copy_options::overwrite_existing, unsaid);
  return played ? 0 : 1;
}

}  // namespace
}  // namespace tarnwick::tour

constexpr const char* kHelp =
    "Usage: tarnwick-tour [--dark] [--keyboard] [--site CONFIGURATION] DIR\n\n"
    "Drives the real window through the main job, and leaves pictures and a protocol in DIR.\n\n"
    "  --dark                on a dark desktop\n"
    "  --keyboard            without the mouse\n"
    "  --site CONFIGURATION  nginx's, of the sample update site\n";

int main(int argc, char* argv[]) {
  const auto words = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (const auto answered = tarnwick::cli::AnswerCommonWords(words, "tarnwick-tour", kHelp)) return *answered;
  QApplication application(argc, argv);
  QCommandLineParser options;
  options.addOption({QStringLiteral("dark"), QStringLiteral("On a dark desktop.")});
  options.addOption({QStringLiteral("keyboard"), QStringLiteral("Without the mouse.")});
  options.addOption({QStringLiteral("site"), QStringLiteral("nginx's configuration of the sample site."),
                     QStringLiteral("configuration")});
  options.addPositionalArgument(QStringLiteral("DIR"), QStringLiteral("Where the pictures go."));
  options.process(application);
  if (options.positionalArguments().size() != 1) options.showHelp(2);
  if (options.isSet(QStringLiteral("dark"))) tarnwick::tour::ApplyDarkPalette();
  std::error_code error;
  const std::filesystem::path folder =
      std::filesystem::absolute(options.positionalArguments().front().toStdString());
  std::filesystem::create_directories(folder, error);
  if (error) {
    std::cerr << folder << ": " << error.message() << '\n';
    return 2;
  }
  const auto means = options.isSet(QStringLiteral("keyboard")) ? tarnwick::tour::Means::Keyboard
                                                               : tarnwick::tour::Means::Mouse;
  return tarnwick::tour::Run(application, folder, means, options.value(QStringLiteral("site")));
}
