#include "platform/help.h"

namespace tarnwick::help {

void Show(const std::filesystem::path& folder, std::string_view topic) {
  if (IHelpViewer* const viewer = Seam<IHelpViewer>::Used()) viewer->Show(folder, topic);
}

void ShowMessage(const std::filesystem::path& folder, std::string_view message) {
  if (IHelpViewer* const viewer = Seam<IHelpViewer>::Used()) viewer->ShowMessage(folder, message);
}

}  // namespace tarnwick::help
