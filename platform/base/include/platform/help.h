// The viewer of help topics.
#pragma once

#include <filesystem>
#include <string_view>

namespace tarnwick::help {

class IHelpViewer {
 public:
  virtual ~IHelpViewer() = default;
  /// Shows the page `topic` of `folder`. A missing page is no error.
  virtual void Show(const std::filesystem::path& folder, std::string_view topic) = 0;
};

/// Puts `viewer` in place; it must outlive its use. Until then nothing is shown.
void Install(IHelpViewer& viewer);
void Uninstall();

void Show(const std::filesystem::path& folder, std::string_view topic);

}  // namespace tarnwick::help
