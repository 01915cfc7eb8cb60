// The CRC-32 of zlib, PNG and Ethernet: the one that images, packages and the wire are compared by.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarnwick {

/// Taken over bytes as they come.
class Crc32 {
 public:
  void Add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) Add(byte);
  }
  void Add(std::string_view text) {
    for (const char character : text) Add(static_cast<std::uint8_t>(character));
  }
  /// Of all that was added so far.
  std::uint32_t Value() const { return ~mState; }

 private:
  static constexpr std::array<std::uint32_t, 256> kTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
      std::uint32_t crc = i;
      for (int bit = 0; bit < 8; ++bit) crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xEDB88320U : crc >> 1;
      table[i] = crc;
    }
    return table;
  }();

  void Add(std::uint8_t byte) { mState = (mState >> 8) ^ kTable[(mState ^ byte) & 0xFFU]; }

  std::uint32_t mState = 0xFFFFFFFFU;
};

}  // namespace tarnwick
