#include "Images.h"

#include "platform/crc32.h"

namespace tarnwick::qalinfo {

std::span<const std::uint8_t> BytesOf(const QalDeviceImage& image) {
  static_assert(sizeof(QalWord) == 2);
  return {reinterpret_cast<const std::uint8_t*>(image.Words.data()), 2 * image.Words.size()};
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
  if (isNew) {
    tarnwick::Crc32 found;
    found.Add(BytesOf(mPackage.DeviceImage(twin)));
    crc->second = found.Value();
  }
  return crc->second;
}

}  // namespace tarnwick::qalinfo
