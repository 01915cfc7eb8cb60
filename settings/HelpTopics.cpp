#include "settings/HelpTopics.h"

#include "platform/contain.h"
#include "platform/help.h"
#include "platform/program.h"

namespace tarnwick {

void ShowHelpTopic(std::string_view topic) {
  Contain([&] { help::Show(program::This().folder / "help", topic); });
}

}  // namespace tarnwick
