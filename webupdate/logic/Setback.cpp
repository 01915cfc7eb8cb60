#include <string_view>

#include "webupdate/Swap.h"

namespace tarnwick {

std::string SetbackText(const Setback& why) {
  constexpr std::string_view kTexts[] = {"",
                                         "the list is not signed by anybody known, or for another system",
                                         "the release is older than this program",
                                         "neither installed nor fetched",
                                         "not the file that the list names",
                                         "all of it is in place already",
                                         "it does not run on this computer",
                                         "whether it runs could not be found out",
                                         "the new program could not be started",
                                         "the new program ended before its first page",
                                         "an earlier start began to take it back",
                                         "the program was unpacked anew",
                                         "the copy of the old file is gone",
                                         "not read, written or moved"};
  std::string text(kTexts[static_cast<std::size_t>(why.kind)]);
  if (!why.file.empty()) text += ": " + why.file;
  if (why.cause) text += ": " + why.cause.message();
  return text;
}

}  // namespace tarnwick
