// One row of the catalogue, and what of it is believed. docs/update-site.md tells the format.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick {

/// The first character of a row of the catalogue, which tells what it is for.
inline constexpr char kProgramTag = '$';
inline constexpr char kMotorTag = '@';
inline constexpr char kAccessoryTag = '%';

inline bool IsPackageRow(std::string_view line) {
  return line.starts_with(kMotorTag) || line.starts_with(kAccessoryTag);
}

/// The three fields of a row that are read; the views lie in the line.
struct CatalogueRow {
  std::string_view name;    ///< Of the file; harmless.
  std::string_view second;  ///< A date or a version, kept as text.
  std::int32_t size = 0;    ///< In bytes, never negative; 0 where the field has no number.
};

/// Reads a line that begins with the tag of a row. None for a row that has fewer than three fields, whose
/// file has no harmless name, or whose second field is no short text in print.
std::optional<CatalogueRow> ReadCatalogueRow(std::string_view line);

}  // namespace tarnwick
