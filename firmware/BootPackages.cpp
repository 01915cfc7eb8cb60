// The boot packages' code, apart from the records that stand here in full, comes from a generator:
// the same instruction words on every call and every machine, which no device needs to understand.
#include "firmware/BootPackages.h"

#include <array>
#include <cstdint>
#include <map>
#include <string_view>

#include "firmware/QalWriter.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

constexpr std::size_t kRecordBytes = 16;
using Record = std::array<std::uint8_t, kRecordBytes>;
/// Records given in full, by byte address.
using GivenRecords = std::map<std::uint16_t, std::string_view>;

/// An instruction word: its operation and the bits that its operand may use.
struct Instruction {
  std::uint16_t operation;
  std::uint16_t operandMask;
};

constexpr std::array<Instruction, 8> kSmallCore = {{{0x3000, 0xFF},
                                                    {0x0080, 0x7F},
                                                    {0x0800, 0x7F},
                                                    {0x2800, 0x7F},
                                                    {0x1D03, 0x00},
                                                    {0x1283, 0x00},
                                                    {0x2000, 0x7F},
                                                    {0x0008, 0x00}}};
constexpr std::array<Instruction, 8> kLargeCore = {{{0x0E00, 0xFF},
                                                    {0x6E00, 0xFF},
                                                    {0x5000, 0xFF},
                                                    {0xD700, 0xFF},
                                                    {0x90D8, 0x00},
                                                    {0xA4D8, 0x00},
                                                    {0xEC00, 0xFF},
                                                    {0x0012, 0x00}}};

/// One record of instruction words. The address alone seeds them.
Record Code(std::uint16_t address, const std::array<Instruction, 8>& core) {
  std::uint32_t state = address * 2654435761u + 1u;
  Record record{};
  for (std::size_t i = 0; i < record.size(); i += 2) {
    state = state * 1664525u + 1013904223u;
    const Instruction& instruction = core[state >> 29];
    const auto word = instruction.operation | ((state >> 8) & instruction.operandMask);
    record[i] = static_cast<std::uint8_t>(word & 0xFF);
    record[i + 1] = static_cast<std::uint8_t>(word >> 8);
  }
  return record;
}

std::string GivenLine(std::string_view record) {
  return std::string(record).append(text::kLineEnd);
}

std::string BootUpdateText(QalHeader header, GivenRecords given) {
  given.merge(GivenRecords{{0x0000, ":10000000FFD800EF03F0FFFFFFFFFFFFFFFFFFFF41"},
                           {0x0C70, ":100C7000F59C0C00DFDFFF00FFFFFFFFFFFFFFFF22"}});
  const auto holdsCode = [](std::uint16_t address) {
    return (address >= 0x0600 && address <= 0x08A0) || address >= 0x0A00;
  };
  Record blank{};
  blank.fill(0xFF);
  std::string records;
  for (std::uint16_t address = 0; address <= 0x0C70; address += kRecordBytes) {
    const auto line = given.find(address);
    records += line != given.end()
                   ? GivenLine(line->second)
                   : QalHexLine(address, holdsCode(address) ? Code(address, kLargeCore) : blank);
  }
  header.FileVersion = "1.2";
  header.Filename = "BootUpdate_9196.qal";
  header.FileDate = "2009.07.07";
  header.Comments = "Bootloader Updater 9196";
  header.Devices = {"AZM MOTOR, 16, MC2_9196", "ALT MOTOR, 17, MC2_9196"};
  return QalHeaderText(header) + QalBlock("MC2_9196", records);
}

}  // namespace

std::string BootJumpFixText() {
  std::string records = GivenLine(":100000000A128A1110280000000000000000000001");
  for (std::uint16_t address = 0x0010; address <= 0x00D0; address += kRecordBytes) {
    records += QalHexLine(address, Code(address, kSmallCore));
  }
  records += GivenLine(":0600E0000A168A15002F2C") + GivenLine(":00000001FF");
  const QalHeader header{.FileVersion = "1.1",
                         .Filename = "bootjumpfix.qal",
                         .FileDate = "2004.12.01",
                         .Comments = "bootjumpfix",
                         .ModelNumber = 5,
                         .ModelName = "CORVANE",
                         .HwRev = {},
                         .Devices = {"AZM MOTOR, 16, bootjumpfix", "ALT MOTOR, 17, bootjumpfix"}};
  return QalHeaderText(header) + QalBlock("bootjumpfix", records);
}

std::string BootUpdateText5() {
  QalHeader header;
  header.ModelNumber = 14;
  header.ModelName = "CORVANEM";
  header.HwRev = "5";
  return BootUpdateText(header, {{0x0680, ":100680005AD80451FE08D8B423D004518508050E69"},
                                 {0x0870, ":10087000A6B2FED71200010EA86EFF0EF5DF050E20"},
                                 {0x0880, ":10088000A86EFD0EF1DF140EA86EFE0EEDDF300E29"}});
}

std::string BootUpdateText6() {
  QalHeader header;
  header.ModelNumber = 13;
  header.ModelName = "CORVANEPRO";
  header.HwRev = "6";
  return BootUpdateText(header, {{0x0680, ":100680005AD80451FE08D8B423D004518508060E68"},
                                 {0x0870, ":10087000A6B2FED71200010EA86EFF0EF5DF060E1F"},
                                 {0x0880, ":10088000A86EFD0EF1DF130EA86EFE0EEDDF300E2A"}});
}

}  // namespace tarnwick
