// What there is to say about the images of a loaded package.
#pragma once

#include <cstdint>
#include <map>
#include <span>

#include "firmware/QALclass.h"

namespace tarnwick::qalinfo {

/// Words as bytes, low byte before high byte.
std::span<const std::uint8_t> BytesOf(const QalDeviceImage& image);

/// What is told of each device's image; of one that devices share it is found once.
class ImageIndex {
 public:
  /// `package` has no errors, and outlives the index.
  explicit ImageIndex(const QALclass& package) : mPackage(package) {}

  /// Words that no record gave.
  std::int32_t Padded(std::int32_t device);
  /// Over the image's bytes from word 0 to the last.
  std::uint32_t Crc32(std::int32_t device);

 private:
  const QALclass& mPackage;
  std::map<std::int32_t, std::int32_t> mPadded;
  std::map<std::int32_t, std::uint32_t> mCrc32;
};

}  // namespace tarnwick::qalinfo
