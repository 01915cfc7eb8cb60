#include "Images.h"

#include <array>

namespace tarnwick::qalinfo {
namespace {

constexpr std::array<std::uint32_t, 256> kCrcTable = [] {
  constexpr std::uint32_t polynomial = 0xEDB88320;
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t crc = i;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? polynomial : 0);
    table[i] = crc;
  }
  return table;
}();

}  // namespace

std::span<const std::uint8_t> BytesOf(const QalDeviceImage& image) {
  static_assert(sizeof(QalWord) == 2);
  return {reinterpret_cast<const std::uint8_t*>(image.Words.data()), 2 * image.Words.size()};
}

std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const std::uint8_t byte : bytes) crc = (crc >> 8) ^ kCrcTable[(crc ^ byte) & 0xFF];
  return ~crc;
}

std::int32_t ImageIndex::Padded(std::int32_t device) {
  const std::int32_t twin = mPackage.DeviceTwin(device);
  const auto [padded, isNew] = mPadded.try_emplace(twin);
  if (isNew) padded->second = mPackage.DeviceImage(twin).NullPadded;
  return padded->second;
}

std::uint32_t ImageIndex::Crc32(std::int32_t device) {
  const std::int32_t twin = mPackage.DeviceTwin(device);
  const auto [crc, isNew] = mCrc32.try_emplace(twin);
  if (isNew) crc->second = qalinfo::Crc32(BytesOf(mPackage.DeviceImage(twin)));
  return crc->second;
}

}  // namespace tarnwick::qalinfo
