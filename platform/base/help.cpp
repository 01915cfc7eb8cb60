#include "platform/help.h"

namespace tarnwick::help {

void Show(const std::filesystem::path& folder, std::string_view topic) {
  if (IHelpViewer* const viewer = Seam<IHelpViewer>::Used()) viewer->Show(folder, topic);
}

}  // namespace tarnwick::help
