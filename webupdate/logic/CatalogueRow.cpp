#include "CatalogueRow.h"

#include <algorithm>

#include "platform/text.h"
#include "webupdate/HarmlessName.h"

namespace tarnwick {
namespace {

constexpr std::size_t kLongestSecond = 64;

}  // namespace

std::optional<CatalogueRow> ReadCatalogueRow(std::string_view line) {
  const std::size_t first = line.find(',');
  const std::size_t second = first == std::string_view::npos ? first : line.find(',', first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  const double size = text::NumericPrefix(line.substr(second + 1));
  const CatalogueRow row{text::Trim(line.substr(1, first - 1)),
                         text::Trim(line.substr(first + 1, second - first - 1)),
                         text::ToInt32(std::max(size, 0.0))};
  if (!IsHarmlessName(row.name) || row.second.size() > kLongestSecond) return std::nullopt;
  if (std::any_of(row.second.begin(), row.second.end(), text::IsControl)) return std::nullopt;
  return row;
}

}  // namespace tarnwick
