// Writes the text of a firmware package in the shape that docs/package-format.md tells.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// The lines of a package above its first block.
struct QalHeader {
  std::string FileVersion;  ///< "1.1", or "1.2" for a package that lists revisions.
  std::string Filename;
  std::string FileDate;
  std::string Comments;
  std::int32_t ModelNumber = 0;
  std::string ModelName;
  std::string HwRev;                 ///< Empty for a package without a revision list.
  std::vector<std::string> Devices;  ///< "name, address, record id"
};

/// The header's lines, each ended by CR LF.
std::string QalHeaderText(const QalHeader& header);

/// One line, ended by CR LF: a data record of at most 255 bytes from byte address `address`.
std::string QalHexLine(std::uint16_t address, std::span<const std::uint8_t> bytes);

/// A whole block with its two key lines. `records` are lines that end in CR LF.
std::string QalBlock(std::string_view recordId, std::string_view records);

/// A whole Intel HEX file of its own, which is no package: `bytes` from address 0 in records of 16, a
/// record of type 04 wherever 64 KB are passed, and the end-of-file record. Lines end in CR LF.
std::string IntelHexText(std::span<const std::uint8_t> bytes);

}  // namespace tarnwick
