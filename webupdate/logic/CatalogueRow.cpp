#include "CatalogueRow.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/text.h"
#include "webupdate/HarmlessName.h"

namespace tarnwick {
namespace {

/// Leaves room for what a name gets in front and behind while its file is being written.
constexpr std::size_t kLongestName = 200;
constexpr std::size_t kLongestSecond = 64;

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

bool IsForbidden(char c) {
  constexpr std::string_view kForbidden = "/\\:*?\"<>|%";
  return IsControl(c) || kForbidden.find(c) != std::string_view::npos;
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

std::optional<CatalogueRow> ReadCatalogueRow(std::string_view line) {
  const std::size_t first = line.find(',');
  const std::size_t second = first == std::string_view::npos ? first : line.find(',', first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  const double size = text::NumericPrefix(line.substr(second + 1));
  const CatalogueRow row{text::Trim(line.substr(1, first - 1)),
                         text::Trim(line.substr(first + 1, second - first - 1)),
                         text::ToInt32(std::max(size, 0.0))};
  if (!IsHarmlessName(row.name) || row.second.size() > kLongestSecond) return std::nullopt;
  if (std::any_of(row.second.begin(), row.second.end(), IsControl)) return std::nullopt;
  return row;
}

}  // namespace tarnwick
