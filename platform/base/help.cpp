#include "platform/help.h"

namespace tarnwick::help {
namespace {
IHelpViewer* gViewer = nullptr;
}

void Install(IHelpViewer& viewer) {
  gViewer = &viewer;
}
void Uninstall() {
  gViewer = nullptr;
}

void Show(const std::filesystem::path& folder, std::string_view topic) {
  if (gViewer != nullptr) gViewer->Show(folder, topic);
}

}  // namespace tarnwick::help
