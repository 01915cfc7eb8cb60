#include "settings/HelpTopics.h"

#include "platform/contain.h"
#include "platform/help.h"

namespace tarnwick {

void ShowHelpTopic(std::string_view topic) {
  Contain([&] { help::Show(topic); });
}

}  // namespace tarnwick
