#include "Images.h"

#include "platform/crc32.h"

namespace tarnwick::qalinfo {

std::span<const std::uint8_t> BytesOf(const QalDeviceImage& image) {
  static_assert(sizeof(QalWord) == 2);
  return {reinterpret_cast<const std::uint8_t*>(image.Words.data()), 2 * image.Words.size()};
}

ImageIndex::Told ImageIndex::Of(std::int32_t device) {
  const std::int32_t twin = mPackage.DeviceTwin(device);
  const auto [told, isNew] = mTold.try_emplace(twin);
  if (isNew) {
    const QalDeviceImage image = mPackage.DeviceImage(twin);
    Crc32 crc;
    crc.Add(BytesOf(image));
    told->second = {image.NullPadded, crc.Value()};
  }
  return told->second;
}

}  // namespace tarnwick::qalinfo
