#include "firmware/QalWriter.h"

#include <algorithm>
#include <numeric>

#include "HexLine.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

std::string Line(std::string_view text) {
  return std::string(text).append(text::kLineEnd);
}

std::string KeyLine(std::string_view key, std::string_view value) {
  return Line(std::string(key).append("=").append(value));
}

}  // namespace

std::string QalHeaderText(const QalHeader& header) {
  std::string digits = header.FileVersion;
  digits.erase(std::remove(digits.begin(), digits.end(), '.'), digits.end());
  std::string result =
      Line(";") + Line("; halcyrion firmware download format: version " + header.FileVersion) + Line(";") +
      KeyLine("FILEVER", digits) + KeyLine("FILENAME", header.Filename) +
      KeyLine("FILEDATE", header.FileDate) + KeyLine("COMMENTS", header.Comments) +
      KeyLine("MODELNUMBER", std::to_string(header.ModelNumber)) + KeyLine("MODELNAME", header.ModelName);
  if (!header.HwRev.empty()) result += KeyLine("HWREV", header.HwRev);
  for (const std::string& device : header.Devices) result += KeyLine("DEVICE_ADDRESS_VERSION", device);
  return result;
}

std::string QalHexLine(std::uint16_t address, std::span<const std::uint8_t> bytes) {
  std::vector<std::uint8_t> record = {static_cast<std::uint8_t>(bytes.size()),
                                      static_cast<std::uint8_t>(address >> 8),
                                      static_cast<std::uint8_t>(address & 0xFF), 0};
  record.insert(record.end(), bytes.begin(), bytes.end());
  record.push_back(LineCheckSum(std::accumulate(record.begin(), record.end(), 0u)));
  std::string line = ":";
  for (const std::uint8_t byte : record) {
    line += "0123456789ABCDEF"[byte >> 4];
    line += "0123456789ABCDEF"[byte & 0xF];
  }
  return Line(line);
}

std::string QalBlock(std::string_view recordId, std::string_view records) {
  return KeyLine("START_HEX", recordId).append(records) + KeyLine("END_HEX", recordId);
}

}  // namespace tarnwick
