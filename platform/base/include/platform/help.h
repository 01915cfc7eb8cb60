// The viewer of help topics.
#pragma once

#include <filesystem>
#include <string_view>

#include "platform/seam.h"

namespace tarnwick::help {

class IHelpViewer {
 public:
  virtual ~IHelpViewer() = default;
  /// Shows the page `topic` of `folder`. A missing page is no error.
  virtual void Show(const std::filesystem::path& folder, std::string_view topic) = 0;
  /// Shows what the pages say of a message, or the first page where they say nothing. The text may be cut
  /// or hold names and numbers of this case.
  virtual void ShowMessage(const std::filesystem::path& folder, std::string_view message) = 0;
};

/// By the viewer that `Seam<IHelpViewer>` has; nothing where it has none.
void Show(const std::filesystem::path& folder, std::string_view topic);
void ShowMessage(const std::filesystem::path& folder, std::string_view message);

}  // namespace tarnwick::help
