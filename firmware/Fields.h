// Lists separated by commas, and the numbers in them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/text.h"

namespace tarnwick {

/// Takes the text before the first comma off `rest`, the comma too; all of it when there is none.
inline std::string_view TakeField(std::string_view& rest) {
  const std::size_t length = std::min(rest.find(','), rest.size());
  const std::string_view field = rest.substr(0, length);
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return field;
}

inline std::int32_t WholeNumber(std::string_view text) {
  return text::ToInt32(text::NumericPrefix(text));
}

}  // namespace tarnwick
