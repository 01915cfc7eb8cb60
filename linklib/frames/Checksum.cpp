#include "linklib/Checksum.h"

#include <array>

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

constexpr std::array<std::uint32_t, 256> kTable32 = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t crc = i;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xEDB88320U : crc >> 1;
    table[i] = crc;
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
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const std::uint8_t byte : bytes) crc = (crc >> 8) ^ kTable32[(crc ^ byte) & 0xFFU];
  return ~crc;
}

}  // namespace tarnwick::wire
