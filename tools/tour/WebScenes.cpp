#include "WebScenes.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QListWidget>
#include <QThread>

namespace tarnwick::tour {
namespace {

constexpr int kPatience = 5000;  // milliseconds
/// On the site alone, and in the folder alone.
constexpr const char* kRemote = "MC_0514";
constexpr const char* kLocalOnly = "MC_0512";

void RehearseUnreachable(Director& director) {
  director.Scene([&director] {
    director.Expect({"Unable to connect to the Halcyrion download site.", QMessageBox::Ok, "unreachable"});
    director.Press("cmdWebUpdate");
  });
  director.Scene([&director] {
    director.Choose("Grid", QLatin1String(kLocalOnly));
    director.Picture("web-unreachable");
    director.Press("cmdDone");
  });
}

void RehearseFetching(Director& director, const std::filesystem::path& package) {
  director.Scene([&director] {
    director.Picture("web-open");
    director.Choose("Grid", QLatin1String(kRemote));
    director.Press("cmdDownload");
  });
  director.Scene([&director, package] {
    std::filesystem::path note = package;
    note.replace_extension(".txt");
    director.Check(QFileInfo(QString::fromStdString(package.string())).size() > 20000, "the package is here");
    director.Check(QFileInfo(QString::fromStdString(note.string())).size() > 20, "its note is here");
    director.Picture("web-fetched");
    director.Expect({"Are you sure you want to Remove this file", QMessageBox::Yes, "remove"});
    director.Press("cmdRemove");
  });
  director.Scene([&director, package] {
    director.Check(!std::filesystem::exists(package), "the package has gone again");
    director.Choose("Grid", QLatin1String(kLocalOnly));
    director.Picture("web-local-only");
    director.Key(Qt::Key_Return);
  });
}

}  // namespace

SampleSite::SampleSite(QString configuration, QString folder)
    : mConfiguration(std::move(configuration)), mFolder(std::move(folder)) {}

SampleSite::~SampleSite() {
  mServer.terminate();
  mServer.waitForFinished(kPatience);
}

bool SampleSite::Start() {
  const QString pid = mFolder + QStringLiteral("/nginx.pid");
  QFile::remove(pid);
  // The server does not outlive a tour that is killed.
  mServer.start(
      QStringLiteral("setpriv"),
      {QStringLiteral("--pdeathsig"), QStringLiteral("TERM"), QStringLiteral("nginx"), QStringLiteral("-p"),
       mFolder, QStringLiteral("-e"), QStringLiteral("nginx.log"), QStringLiteral("-c"), mConfiguration});
  if (!mServer.waitForStarted(kPatience)) return false;
  // It listens before it writes that file. No events meanwhile: they would bring on the next scene.
  const QDeadlineTimer patience(kPatience);
  while (!QFileInfo::exists(pid) && !patience.hasExpired()) QThread::msleep(5);
  return QFileInfo::exists(pid);
}

void RehearseWebUpdate(Director& director, SampleSite& site, const std::filesystem::path& folder) {
  RehearseUnreachable(director);
  director.Scene([&director, &site] {
    director.Check(site.Start(), "the sample update site is served");
    director.Press("cmdWebUpdate");
  });
  RehearseFetching(director, folder / (std::string(kRemote) + ".qal"));
  director.Scene([&director] {
    const auto& list = director.Find<QListWidget>("lstFirmware");
    const QListWidgetItem* const item = list.currentItem();
    director.Check(item != nullptr && item->text().startsWith(QLatin1String(kLocalOnly)),
                   "what was current there is selected here");
  });
}

}  // namespace tarnwick::tour
