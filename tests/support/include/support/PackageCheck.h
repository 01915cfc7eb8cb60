// The loader held against the plain reader, and damage that does not end at the first checksum.
#pragma once

#include "support/PlainReader.h"

namespace tarnwick::test {

/// The error number that both readers give for `text`, if they make the same of it.
inline std::optional<std::int32_t> Agreed(const std::string& text) {
  QALclass package;
  if (!text.empty()) package.LoadQALfile({}, text);
  const PlainPackage picture = PictureOf(package);
  if (picture != PlainReader::Read(text)) return std::nullopt;
  for (std::int32_t i = 1; !package.ErrorsFound() && i <= package.Devices(); ++i) {
    const auto& words = picture.devices[static_cast<std::size_t>(i - 1)].words;
    const auto& twin = picture.devices[static_cast<std::size_t>(package.DeviceTwin(i) - 1)].words;
    QalDeviceImage image = package.DeviceImage(i);
    for (const PlainWord& word : words) image.NullPadded -= word.padded;
    const bool same = std::equal(words.begin(), words.end(), image.Words.begin(), image.Words.end(),
                                 [](auto& a, auto& b) { return a.lo == b.LoByte && a.hi == b.HiByte; });
    if (!same || words != twin || image.NullPadded != 0) return std::nullopt;
  }
  return picture.error;
}

/// Gives each hex line the checksum of what stands in it.
inline void RepairCheckSums(std::string& text) {
  for (std::size_t at = 0, end; (end = text.find("\r\n", at)) != text.npos; at = end + 2) {
    if (text[at] != ':' || end - at < 11) continue;
    std::int32_t sum = 0;
    for (std::size_t i = at + 1; i < end - 2; i += 2) sum -= QALclass().HexToLong(text.substr(i, 2));
    for (const int shift : {4, 0}) text[end - (shift == 4 ? 2 : 1)] = "0123456789ABCDEF"[sum >> shift & 15];
  }
}

}  // namespace tarnwick::test
