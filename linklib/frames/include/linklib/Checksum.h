// The two checksums of the link protocol; docs/link-protocol.md.
#pragma once

#include <cstdint>
#include <span>

namespace tarnwick::wire {

/// CRC-16/CCITT-FALSE, which ends every frame.
std::uint16_t Crc16(std::span<const std::uint8_t> bytes);

/// CRC-32 (IEEE), by which program memory is compared.
std::uint32_t Crc32(std::span<const std::uint8_t> bytes);

}  // namespace tarnwick::wire
