#include "firmware/QalWriter.h"

#include <algorithm>
#include <array>

#include "HexLine.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

constexpr std::uint8_t kData = 0;
constexpr std::uint8_t kEndOfFile = 1;
constexpr std::uint8_t kUpperAddress = 4;
constexpr std::size_t kRecordBytes = 16;
constexpr std::size_t kAddressed = 0x10000;  ///< Bytes that a record's own address tells apart.

std::string Line(std::string_view text) {
  return std::string(text).append(text::kLineEnd);
}

std::string KeyLine(std::string_view key, std::string_view value) {
  return Line(std::string(key).append("=").append(value));
}

std::string Record(std::uint8_t type, std::uint16_t address, std::span<const std::uint8_t> bytes) {
  const std::size_t length = 1 + 2 * (bytes.size() + 5);
  std::string line(length + text::kLineEnd.size(), ':');
  std::size_t at = 1;
  unsigned sum = 0;
  const auto put = [&](unsigned byte) {
    line[at++] = "0123456789ABCDEF"[byte >> 4 & 0xF];
    line[at++] = "0123456789ABCDEF"[byte & 0xF];
    sum += byte & 0xFF;
  };
  put(static_cast<unsigned>(bytes.size()));
  put(address >> 8);
  put(address);
  put(type);
  for (const std::uint8_t byte : bytes) put(byte);
  put(LineCheckSum(sum));
  return line.replace(length, text::kLineEnd.size(), text::kLineEnd);
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
  return Record(kData, address, bytes);
}

std::string QalBlock(std::string_view recordId, std::string_view records) {
  return KeyLine("START_HEX", recordId).append(records) + KeyLine("END_HEX", recordId);
}

std::string IntelHexText(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += kRecordBytes) {
    if (at > 0 && at % kAddressed == 0) {
      const std::size_t upper = at / kAddressed;
      const std::array high = {static_cast<std::uint8_t>(upper >> 8),
                               static_cast<std::uint8_t>(upper & 0xFF)};
      text += Record(kUpperAddress, 0, high);
    }
    text += Record(kData, static_cast<std::uint16_t>(at % kAddressed),
                   bytes.subspan(at, std::min(kRecordBytes, bytes.size() - at)));
  }
  return text + Record(kEndOfFile, 0, {});
}

}  // namespace tarnwick
