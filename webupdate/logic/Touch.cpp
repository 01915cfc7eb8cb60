#include "webupdate/Touch.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

#include "platform/files.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

constexpr std::string_view kForm = "yyyy-mm-dd";
constexpr int kTmYear = 1900;

/// The whole of `digits` as a number; none when it is anything else.
std::optional<int> WholeNumber(std::string_view digits) {
  int value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value);
  if (error != std::errc() || stop != end || value < 0) return std::nullopt;
  return value;
}

}  // namespace

std::optional<std::tm> ReadDate(std::string_view text) {
  text = text::Trim(text);
  if (text.size() != kForm.size() || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto year = WholeNumber(text.substr(0, 4));
  const auto month = WholeNumber(text.substr(5, 2));
  const auto day = WholeNumber(text.substr(8, 2));
  if (!year || !month || !day) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  if (!date.ok()) return std::nullopt;
  std::tm result{};
  result.tm_year = *year - kTmYear;
  result.tm_mon = *month - 1;
  result.tm_mday = *day;
  return result;
}

std::string DateText(const std::tm& date) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", date.tm_year + kTmYear, date.tm_mon + 1,
                date.tm_mday);
  return text.data();
}

bool Touch(std::filesystem::path sFileName, std::tm dDate) {
  return files::SetLastModified(sFileName, dDate);
}

}  // namespace tarnwick
