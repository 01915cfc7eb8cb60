// Dates of the catalogue, and the times of files that bear them.
#pragma once

#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

/// The day that "yyyy-mm-dd" names, at midnight; blanks round it allowed. None for other text and for a day
/// that no calendar has.
std::optional<std::tm> ReadDate(std::string_view text);

/// "yyyy-mm-dd"
std::string DateText(const std::tm& date);

/// Sets the time at which a file was last modified to `dDate`, taken as local time, and leaves the rest of
/// the file alone. False when that fails: a missing file stays missing.
bool Touch(std::filesystem::path sFileName, std::tm dDate);

}  // namespace tarnwick
