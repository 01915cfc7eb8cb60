#include "webupdate/Refusal.h"

#include <string_view>

namespace tarnwick {

std::string WhyNotText(const WhyNot& why) {
  constexpr std::string_view kTexts[] = {"",
                                         "another window is open",
                                         "the folder cannot be locked",
                                         "no release is offered",
                                         "not fetched",
                                         "not the file that the list names",
                                         "not saved",
                                         "nothing could be started to wait for the end of the program"};
  std::string text(kTexts[static_cast<std::size_t>(why.refusal)]);
  if (!why.file.empty()) text += ": " + why.file;
  if (why.cause) text += ": " + why.cause.message();
  return text;
}

}  // namespace tarnwick
