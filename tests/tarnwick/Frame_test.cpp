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
  // Kind, command, number and address of each. The payload is what the frame must hold to be whole.
  using Head = std::tuple<Kind, Command, int, int>;
  const Head expected[] = {
      {Kind::Request, Command::Identify, 0, 0},   {Kind::Done, Command::Identify, 0, 0},
      {Kind::Request, Command::Speed, 1, 0},      {Kind::Done, Command::Speed, 1, 0},
      {Kind::Request, Command::State, 1, 16},     {Kind::Done, Command::State, 1, 16},
      {Kind::Request, Command::Write2, 0x2C, 16}, {Kind::Done, Command::Write2, 0x2C, 16},
      {Kind::Request, Command::Read, 0x2D, 17},   {Kind::Done, Command::Read, 0x2D, 17},
      {Kind::Request, Command::Start, 0x2E, 16},  {Kind::Refused, Command::Start, 0x2E, 16}};
  std::istringstream page(test::ReadFile(TARNWICK_PROTOCOL_PAGE));
  std::string line;
  while (std::getline(page, line) && line != "### Examples") continue;
  for (const Head& head : expected) {
    Bytes bytes;
    while (bytes.empty() && std::getline(page, line)) bytes = HexOf(line);
    Frame frame;
    std::size_t length = 0;
    EXPECT_EQ(ScanFrame(bytes, frame, length), Scan::Whole) << line;
    EXPECT_EQ(Head(frame.kind, frame.command, frame.sequence, frame.address), head) << line;
    EXPECT_EQ(Encode(frame), bytes) << line;
  }
}

}  // namespace
}  // namespace tarnwick::wire
