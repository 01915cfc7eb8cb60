// The viewer of help topics.
#pragma once

#include <string_view>

#include "platform/seam.h"

namespace tarnwick::help {

class IHelpViewer {
 public:
  virtual ~IHelpViewer() = default;
  /// Shows the page `topic`. One that there is not is no error.
  virtual void Show(std::string_view topic) = 0;
  /// Shows what the pages say of a message, or the first page where they say nothing. The text may be cut
  /// or hold names and numbers of this case.
  virtual void ShowMessage(std::string_view message) = 0;
};

/// By the viewer that `Seam<IHelpViewer>` has; nothing where it has none.
void Show(std::string_view topic);
void ShowMessage(std::string_view message);

}  // namespace tarnwick::help
