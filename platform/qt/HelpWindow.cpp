#include "platform/qt/HelpWindow.h"

#include "HelpPages.h"
#include "HelpView.h"

namespace tarnwick::qt {

HelpWindow::HelpWindow() {
  Seam<help::IHelpViewer>::Install(*this);
}

HelpWindow::~HelpWindow() {
  Seam<help::IHelpViewer>::Uninstall();
}

void HelpWindow::Show(const std::filesystem::path& folder, std::string_view topic) {
  const QString page = QString::fromLatin1(topic.data(), static_cast<qsizetype>(topic.size()));
  if (!IsHelpTopic(page)) return;
  if (mView == nullptr || mView->Folder() != folder) mView = std::make_unique<HelpView>(folder);
  mView->Open(page);
}

}  // namespace tarnwick::qt
