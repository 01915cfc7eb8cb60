#include "WebScenes.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTest>

namespace tarnwick::tour {
namespace {

constexpr int kPatience = 5000;  // milliseconds
/// On the site alone, and in the folder alone.
constexpr const char* kRemote = "MC_0514";
constexpr const char* kLocalOnly = "MC_0512";

void ChooseRow(Director& director, const char* name) {
  auto& grid = director.Find<QTableView>("Grid");
  const QAbstractItemModel& model = *grid.model();
  for (int row = 0; row < model.rowCount(); ++row) {
    const QModelIndex cell = model.index(row, 0);
    if (cell.data().toString() != QLatin1String(name)) continue;
    grid.scrollTo(cell);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(cell).center());
    return;
  }
  director.Check(false, std::string("the list has ") + name);
}

void RehearseUnreachable(Director& director) {
  director.Scene([&director] {
    director.Expect({"Unable to connect to the Halcyrion download site.", QMessageBox::Ok, "unreachable"});
    director.Click("cmdWebUpdate");
  });
  director.Scene([&director] {
    ChooseRow(director, kLocalOnly);
    director.Picture("web-unreachable");
    director.Click("cmdDone");
  });
}

void RehearseFetching(Director& director, const std::filesystem::path& package) {
  director.Scene([&director] {
    director.Picture("web-open");
    ChooseRow(director, kRemote);
    director.Click("cmdDownload");
  });
  director.Scene([&director, package] {
    std::filesystem::path note = package;
    note.replace_extension(".txt");
    director.Check(QFileInfo(QString::fromStdString(package.string())).size() > 20000, "the package is here");
    director.Check(QFileInfo(QString::fromStdString(note.string())).size() > 20, "its note is here");
    director.Picture("web-fetched");
    director.Expect({"Are you sure you want to Remove this file", QMessageBox::Yes, "remove"});
    director.Click("cmdRemove");
  });
  director.Scene([&director, package] {
    director.Check(!std::filesystem::exists(package), "the package has gone again");
    ChooseRow(director, kLocalOnly);
    director.Picture("web-local-only");
    QTest::keyClick(&director.Find<QTableView>("Grid"), Qt::Key_Return);
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
  // It listens before it writes that file.
  return mServer.waitForStarted(kPatience) &&
         QTest::qWaitFor([&] { return QFileInfo::exists(pid); }, kPatience);
}

void RehearseWebUpdate(Director& director, SampleSite& site, const std::filesystem::path& folder) {
  RehearseUnreachable(director);
  director.Scene([&director, &site] {
    director.Check(site.Start(), "the sample update site is served");
    director.Click("cmdWebUpdate");
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
