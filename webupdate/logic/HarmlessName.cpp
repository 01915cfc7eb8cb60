#include "webupdate/HarmlessName.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/text.h"

namespace tarnwick {
namespace {

/// Leaves room for what a name gets in front and behind while its file is being written.
constexpr std::size_t kLongestName = 200;

bool IsForbidden(char c) {
  constexpr std::string_view kForbidden = "/\\:*?\"<>|%";
  return text::IsControl(c) || kForbidden.find(c) != std::string_view::npos;
}

/// Names that mean a device on some systems, whatever the extension.
bool IsDeviceName(std::string_view name) {
  const std::string stem = text::Upper(text::Trim(name.substr(0, name.find('.'))));
  constexpr std::array<std::string_view, 4> kPlain{"CON", "PRN", "AUX", "NUL"};
  if (std::find(kPlain.begin(), kPlain.end(), stem) != kPlain.end()) return true;
  return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '0' &&
         stem[3] <= '9';
}

}  // namespace

bool IsHarmlessName(std::string_view name) {
  if (name.empty() || name.size() > kLongestName) return false;
  if (name.front() == '.' || name.front() == ' ' || name.back() == '.' || name.back() == ' ') return false;
  return std::none_of(name.begin(), name.end(), IsForbidden) && !IsDeviceName(name);
}

}  // namespace tarnwick
