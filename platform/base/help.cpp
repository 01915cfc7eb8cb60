#include "platform/help.h"

namespace tarnwick::help {

void Show(std::string_view topic) {
  if (IHelpViewer* const viewer = Seam<IHelpViewer>::Used()) viewer->Show(topic);
}

void ShowMessage(std::string_view message) {
  if (IHelpViewer* const viewer = Seam<IHelpViewer>::Used()) viewer->ShowMessage(message);
}

}  // namespace tarnwick::help
