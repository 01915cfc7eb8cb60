#include "platform/qt/HelpWindow.h"

#include "HelpPages.h"
#include "HelpView.h"
#include "platform/qt/QtText.h"

namespace tarnwick::qt {

HelpWindow::HelpWindow() {
  Seam<help::IHelpViewer>::Install(*this);
}

HelpWindow::~HelpWindow() {
  Seam<help::IHelpViewer>::Uninstall();
}

void HelpWindow::Show(const std::filesystem::path& folder, std::string_view topic) {
  const QString page = QString::fromLatin1(topic.data(), static_cast<qsizetype>(topic.size()));
  if (IsHelpTopic(page)) Of(folder).Open(page);
}

void HelpWindow::ShowMessage(const std::filesystem::path& folder, std::string_view message) {
  Of(folder).OpenAt(qt::Show(message));
}

HelpView& HelpWindow::Of(const std::filesystem::path& folder) {
  if (mView == nullptr || mView->Folder() != folder) mView = std::make_unique<HelpView>(folder);
  return *mView;
}

}  // namespace tarnwick::qt
