#include "linklib/Checksum.h"

#include <array>

#include "platform/crc32.h"

namespace tarnwick::wire {
namespace {

constexpr std::array<std::uint16_t, 256> kTable16 = [] {
  std::array<std::uint16_t, 256> table{};
  for (unsigned i = 0; i < table.size(); ++i) {
    unsigned crc = i << 8;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000U) != 0 ? (crc << 1) ^ 0x1021U : crc << 1;
    table[i] = static_cast<std::uint16_t>(crc);
  }
  return table;
}();

}  // namespace

std::uint16_t Crc16(std::span<const std::uint8_t> bytes) {
  unsigned crc = 0xFFFF;
  for (const std::uint8_t byte : bytes) crc = ((crc << 8) & 0xFFFFU) ^ kTable16[(crc >> 8) ^ byte];
  return static_cast<std::uint16_t>(crc);
}

std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
  tarnwick::Crc32 crc;
  crc.Add(bytes);
  return crc.Value();
}

}  // namespace tarnwick::wire
