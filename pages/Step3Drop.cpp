// Packages that are dropped on the third page.
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include "firmware/PackageFolder.h"
#include "pages/Step3.h"
#include "platform/text.h"
#include "settings/Settings.h"
#include "webupdate/Packages.h"
#include "wizard/CWizard.h"
#include "wizard/modWizard.h"

namespace tarnwick {
namespace {

std::vector<std::filesystem::path> PackagesOf(const QMimeData& dropped) {
  std::vector<std::filesystem::path> packages;
  for (const QUrl& url : dropped.urls()) {
    const std::filesystem::path file = url.toLocalFile().toStdString();
    if (text::EqualNoCase(file.extension().string(), kPackageEnding)) packages.push_back(file);
  }
  return packages;
}

bool IsLocked() {
  return gController->WizardHandle().Frozen();
}

}  // namespace

void Step3::dragEnterEvent(QDragEnterEvent* event) {
  if (!IsLocked() && !PackagesOf(*event->mimeData()).empty()) event->acceptProposedAction();
}

void Step3::dropEvent(QDropEvent* event) {
  const auto packages = PackagesOf(*event->mimeData());
  if (IsLocked() || packages.empty()) return;
  event->setDropAction(Qt::CopyAction);
  event->accept();
  // Whoever was dragged from waits until this returns: no box may come up before.
  QTimer::singleShot(0, this, [this, packages] { BringPackages(packages); });
}

void Step3::BringPackages(const std::vector<std::filesystem::path>& packages) {
  if (IsLocked() || !isVisible()) return;
  std::string brought;
  for (const std::filesystem::path& package : packages) {
    if (BringPackage(gFirmwareDir, package)) brought = package.filename().string();
  }
  if (!brought.empty()) ListFirmware(brought);
}

}  // namespace tarnwick
