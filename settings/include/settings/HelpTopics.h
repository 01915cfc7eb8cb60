// The program's help topics: pages that are built into it.
#pragma once

#include <string_view>

namespace tarnwick {

/// Shows the page `topic`, such as "Step1.htm". An unknown page is no error, and a failure goes no
/// further than this.
void ShowHelpTopic(std::string_view topic);

}  // namespace tarnwick
