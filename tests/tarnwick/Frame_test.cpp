#include "tarnwick/Frame.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/TempFolder.h"
#include "tarnwick/Checksum.h"

namespace tarnwick::wire {
namespace {

/// The bytes in the backquotes of a line of the page; empty when it holds none.
Bytes HexOf(const std::string& line) {
  Bytes bytes;
  const std::size_t first = line.find('`');
  const std::size_t last = line.rfind('`');
  if (first == last) return bytes;
  std::istringstream text(line.substr(first + 1, last - first - 1));
  for (unsigned value = 0; text >> std::hex >> value;) bytes.push_back(static_cast<std::uint8_t>(value));
  return bytes;
}

TEST(Checksum, GivesThePublishedCheckValues) {
  const std::string digits = "123456789";
  const Bytes bytes(digits.begin(), digits.end());
  EXPECT_EQ(Crc16(bytes), 0x29B1);
  EXPECT_EQ(Crc32(bytes), 0xCBF43926U);
}

TEST(Frame, AgreesWithTheExamplesOfThePage) {
  const std::vector<Frame> expected = {
      {Kind::Request, Command::Identify, 0x00, 0, {}},
      {Kind::Done, Command::Identify, 0x00, 0, {'T', 'W', 1, 0, 1, 3}},
      {Kind::Request, Command::Speed, 0x01, 0, {3}},
      {Kind::Done, Command::Speed, 0x01, 0, {3}},
      {Kind::Request, Command::State, 0x01, 16, {}},
      {Kind::Done, Command::State, 0x01, 16, {1, 4, 7}},
      {Kind::Request, Command::Write2, 0x2C, 16, {1, 44, 0x0A, 0x12, 0x8A, 0x11}},
      {Kind::Done, Command::Write2, 0x2C, 16, {}},
      {Kind::Request, Command::Read, 0x2D, 17, {0, 0, 3}},
      {Kind::Done, Command::Read, 0x2D, 17, {3, 0x16, 0x0A, 0x15, 0x8A, 0x2F, 0x00}},
      {Kind::Request, Command::Start, 0x2E, 16, {}},
      {Kind::Refused, Command::Start, 0x2E, 16, {1}},
  };
  std::istringstream page(test::ReadFile(TARNWICK_PROTOCOL_PAGE));
  std::string line;
  while (std::getline(page, line) && line != "### Examples") continue;
  std::size_t count = 0;
  while (std::getline(page, line) && !line.starts_with("## ")) {
    const Bytes bytes = HexOf(line);
    if (bytes.empty()) continue;
    ASSERT_LT(count, expected.size()) << line;
    Frame frame;
    std::size_t length = 0;
    EXPECT_EQ(ScanFrame(bytes, frame, length), Scan::Whole) << line;
    EXPECT_EQ(frame, expected[count]) << line;
    EXPECT_EQ(Encode(expected[count]), bytes) << line;
    ++count;
  }
  EXPECT_EQ(count, expected.size());
}

}  // namespace
}  // namespace tarnwick::wire
