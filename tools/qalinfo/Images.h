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

  struct Told {
    std::int32_t padded = 0;  ///< Words that no record gave.
    std::uint32_t crc32 = 0;  ///< Over the image's bytes from word 0 to the last.
  };
  Told Of(std::int32_t device);

 private:
  const QALclass& mPackage;
  std::map<std::int32_t, Told> mTold;
};

}  // namespace tarnwick::qalinfo
