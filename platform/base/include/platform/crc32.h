// The CRC-32 of zlib, PNG and Ethernet: the one that images, packages and the wire are compared by.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarnwick {

/// Taken over bytes as they come, eight at a time: bit by bit, or byte by byte, it would cost more than to
/// read them.
class Crc32 {
 public:
  void Add(std::span<const std::uint8_t> bytes) {
    for (; bytes.size() >= kStep; bytes = bytes.subspan(kStep)) AddStep(bytes.first<kStep>());
    for (const std::uint8_t byte : bytes) mState = (mState >> 8) ^ kTables[0][(mState ^ byte) & 0xFFU];
  }
  void Add(std::string_view text) {
    Add(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
  }
  /// Of all that was added so far.
  std::uint32_t Value() const { return ~mState; }

 private:
  static constexpr std::size_t kStep = 8;
  /// What a byte adds that so many others follow in its step.
  using Tables = std::array<std::array<std::uint32_t, 256>, kStep>;
  static constexpr Tables kTables = [] {
    Tables tables{};
    for (std::uint32_t i = 0; i < 256; ++i) {
      std::uint32_t crc = i;
      for (int bit = 0; bit < 8; ++bit) crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xEDB88320U : crc >> 1;
      tables[0][i] = crc;
    }
    for (std::size_t behind = 1; behind < kStep; ++behind) {
      for (std::size_t i = 0; i < 256; ++i) {
        const std::uint32_t before = tables[behind - 1][i];
        tables[behind][i] = (before >> 8) ^ tables[0][before & 0xFFU];
      }
    }
    return tables;
  }();

  void AddStep(std::span<const std::uint8_t, kStep> bytes) {
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < kStep; ++i) {
      const std::uint32_t mixed = i < 4 ? mState >> (8 * i) : 0;
      next ^= kTables[kStep - 1 - i][(mixed ^ bytes[i]) & 0xFFU];
    }
    mState = next;
  }

  std::uint32_t mState = 0xFFFFFFFFU;
};

}  // namespace tarnwick
