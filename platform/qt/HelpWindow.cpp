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

void HelpWindow::Show(std::string_view topic) {
  const QString page = QString::fromLatin1(topic.data(), static_cast<qsizetype>(topic.size()));
  if (IsHelpTopic(page)) View().Open(page);
}

void HelpWindow::ShowMessage(std::string_view message) {
  View().OpenAt(qt::ShowName(message));
}

HelpView& HelpWindow::View() {
  if (mView == nullptr) mView = std::make_unique<HelpView>();
  return *mView;
}

}  // namespace tarnwick::qt
