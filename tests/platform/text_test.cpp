#include "platform/text.h"

#include <gmock/gmock.h>

#include <cfloat>
#include <cmath>

namespace tarnwick::text {
namespace {

TEST(Text, FollowsTheCodePageAndSplitsFields) {
  EXPECT_EQ(Upper("az AZ09\xE0\xFE\xFF\x9A\x9C\x9E"), "AZ AZ09\xC0\xDE\x9F\x8A\x8C\x8E");
  EXPECT_EQ(Upper("\xF7\xD7\xDF\xB5\x83"), "\xF7\xD7\xDF\xB5\x83") << "characters without a capital";
  EXPECT_TRUE(EqualNoCase("\xE9t\xE9", "\xC9T\xC9") && !EqualNoCase("a", "ab"));
  EXPECT_THAT(Split("", ','), testing::ElementsAre(""));
  EXPECT_THAT(Split("a,,b,", ','), testing::ElementsAre("a", "", "b", ""));
}

TEST(Text, ReadsANumberFromItsStart) {
  const std::tuple<const char*, double, bool> kCases[] = {
      {"", 0, false},    {" 12 ", 12, true}, {"12a", 12, false}, {"-3.5", -3.5, true},  {"+.5", 0.5, true},
      {"5.", 5, true},   {".", 0, false},    {"+-1", 0, false},  {"1e5", 1, false},     {"0x10", 0, false},
      {"1 2", 1, false}, {"inf", 0, false},  {"\t1", 0, false},  {"1.2.3", 1.2, false}, {"007", 7, true}};
  for (const auto& [text, value, whole] : kCases) {
    EXPECT_EQ(NumericPrefix(text), value) << text;
    EXPECT_EQ(IsNumeric(text), whole) << text;
  }
  EXPECT_EQ(NumericPrefix("-" + std::string(400, '9')), -DBL_MAX);
  EXPECT_EQ(NumericPrefix("0." + std::string(400, '0') + "1"), 0);
}

TEST(Text, RoundsHalvesToEvenStopsAtTheBoundsAndShowsTwoDecimals) {
  const std::pair<double, std::int32_t> kCases[] = {
      {0.5, 0}, {1.5, 2}, {-2.5, -2}, {2.51, 3}, {1e20, INT32_MAX}, {-1e20, INT32_MIN}, {NAN, 0}};
  for (const auto& [value, rounded] : kCases) EXPECT_EQ(ToInt32(value), rounded) << value;
  EXPECT_EQ(Fixed2(7 / 100.0 + 4), "4.07");
  EXPECT_EQ(ToInt16(40000), 32767);
}

}  // namespace
}  // namespace tarnwick::text
