#include "platform/text.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace tarnwick::text {
namespace {

using testing::ElementsAre;

TEST(Text, TrimsBlanksOnly) {
  EXPECT_EQ(Trim("  a b\t "), "a b\t");
  EXPECT_EQ(TrimLeft("  a "), "a ");
  EXPECT_EQ(TrimRight("  a "), "  a");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(Trim(""), "");
}

TEST(Text, UpperFollowsTheCodePage) {
  EXPECT_EQ(Upper("az AZ09"), "AZ AZ09");
  EXPECT_EQ(Upper("\xE0\xFE\xFF\x9A\x9C\x9E"), "\xC0\xDE\x9F\x8A\x8C\x8E");
  EXPECT_EQ(Upper("\xF7\xD7\xDF\xB5\x83"), "\xF7\xD7\xDF\xB5\x83") << "characters without a capital";
  EXPECT_TRUE(EqualNoCase("\xE9t\xE9", "\xC9T\xC9"));
  EXPECT_FALSE(EqualNoCase("a", "ab"));
}

TEST(Text, SplitsFields) {
  EXPECT_THAT(Split("", ','), ElementsAre(""));
  EXPECT_THAT(Split("a,,b,", ','), ElementsAre("a", "", "b", ""));
}

TEST(Text, ALineEndsInCarriageReturnLineFeed) {
  std::string_view rest = "one\r\n\r\nt\rw\no\r\nlost";
  std::string_view line;
  std::vector<std::string> lines;
  while (NextLine(rest, line)) lines.emplace_back(line);
  EXPECT_THAT(lines, ElementsAre("one", "", "t\rw\no"));
  EXPECT_EQ(rest, "lost");
}

TEST(Text, SplitsKeyAndValue) {
  const struct {
    const char* line;
    const char* key;
    const char* value;
  } kCases[] = {
      {"key=value", "KEY", "value"}, {"\t k y \t=\t a = b \r", "K Y", "a = b"},
      {"=value", "", "value"},       {"no equals sign", "", ""},
      {"key=", "KEY", ""},           {"", "", ""},
      {"a\nb = c\td", "A B", "c d"}, {" ; note = 1 ", "; NOTE", "1"},
  };
  for (const auto& [line, key, value] : kCases) {
    const KeyValue split = SplitKeyValue(line);
    EXPECT_EQ(split.key, key) << line;
    EXPECT_EQ(split.value, value) << line;
  }
}

TEST(Text, ReadsTheNumericPrefix) {
  constexpr double kMost = std::numeric_limits<double>::max();
  const std::string digits(400, '9');
  const std::string tiny = "0." + std::string(400, '0') + "1";
  const std::pair<std::string, double> kCases[] = {
      {"", 0},
      {"abc", 0},
      {"  12", 12},
      {"12abc", 12},
      {"-3.5x", -3.5},
      {"+4", 4},
      {".5", 0.5},
      {"5.", 5},
      {".", 0},
      {"-", 0},
      {"--1", 0},
      {"+-1", 0},
      {"1e5", 1},
      {"0x10", 0},
      {"1,5", 1},
      {"1 2", 1},
      {"inf", 0},
      {"nan", 0},
      {"\t1", 0},
      {"1.2.3", 1.2},
      {"4.07", 4.07},
      {digits, kMost},
      {"-" + digits, -kMost},
      {tiny, 0},
      {"-" + tiny, 0},
      {"007", 7},
      {"\xB2", 0},
  };
  for (const auto& [text, value] : kCases) EXPECT_EQ(NumericPrefix(text), value) << text;
}

TEST(Text, TellsWhetherTheWholeIsANumber) {
  for (const char* text : {"2", " 2", "2 ", "-1.5", "+.5", "5."}) EXPECT_TRUE(IsNumeric(text)) << text;
  for (const char* text : {"", " ", "2x", "1e5", "0x1", ".", "+", "1 2", "\t2", "1,5"}) {
    EXPECT_FALSE(IsNumeric(text)) << text;
  }
}

TEST(Text, RoundsHalvesToEvenAndStopsAtTheBounds) {
  constexpr std::int32_t kLow = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();
  const std::pair<double, std::int32_t> kCases[] = {
      {0.5, 0},   {1.5, 2},          {2.5, 2},          {-0.5, 0},     {-1.5, -2},
      {-2.5, -2}, {2.4999, 2},       {2.51, 3},         {1e20, kHigh}, {-1e20, kLow},
      {NAN, 0},   {INFINITY, kHigh}, {-INFINITY, kLow}, {-7.0, -7},    {2147483646.5, 2147483646},
  };
  for (const auto& [value, rounded] : kCases) EXPECT_EQ(ToInt32(value), rounded) << value;
  EXPECT_EQ(ToInt16(40000), 32767);
  EXPECT_EQ(ToInt16(-32768.5), -32768);
  EXPECT_EQ(ToInt16(99.5), 100);
}

TEST(Text, ShowsTwoDecimals) {
  EXPECT_EQ(Fixed2(3.1), "3.10");
  EXPECT_EQ(Fixed2(7 / 100.0 + 4), "4.07");
  EXPECT_EQ(Fixed2(0), "0.00");
  EXPECT_EQ(Fixed2(std::numeric_limits<double>::max()).size(), 312u);
}

}  // namespace
}  // namespace tarnwick::text
