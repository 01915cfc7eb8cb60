#include "platform/text.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarnwick::text {
namespace {

TEST(Text, ReadsANumberFromItsStart) {
  const std::tuple<const char*, double, bool> kCases[] = {
      {"", 0, false},    {" 12 ", 12, true}, {"12a", 12, false}, {"-3.5", -3.5, true},  {"+.5", 0.5, true},
      {"5.", 5, true},   {".", 0, false},    {"+-1", 0, false},  {"1e5", 1, false},     {"0x10", 0, false},
      {"1 2", 1, false}, {"inf", 0, false},  {"\t1", 0, false},  {"1.2.3", 1.2, false}, {"007", 7, true}};
  for (const auto& [text, value, whole] : kCases) {
    EXPECT_EQ(NumericPrefix(text), value) << text;
    EXPECT_EQ(IsNumeric(text), whole) << text;
  }
}

TEST(Text, RoundsHalvesToEvenAndStopsAtTheBounds) {
  const std::pair<double, std::int32_t> kCases[] = {{0.5, 0},  {1.5, 2},          {-2.5, -2},
                                                    {2.51, 3}, {1e20, INT32_MAX}, {NAN, 0}};
  for (const auto& [value, rounded] : kCases) EXPECT_EQ(ToInt32(value), rounded) << value;
}

}  // namespace
}  // namespace tarnwick::text
