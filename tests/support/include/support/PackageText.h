// Packages made up for tests.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "firmware/QalWriter.h"

namespace tarnwick::test {

/// Word index to value (Hi*256+Lo); indices left out are gaps.
using ImageWords = std::map<std::int32_t, std::int32_t>;

struct PackageDevice {
  std::string name;
  std::int32_t address = 0;
  ImageWords words;
  std::string version = "0415";  ///< Tail of the record id: 4.15.
};

/// Words 0 to `last`, each with a value of its own and both bytes in use.
inline ImageWords CountedWords(std::int32_t last) {
  ImageWords words;
  for (std::int32_t word = 0; word <= last; ++word) words[word] = 0x2100 + word;
  return words;
}

/// The text of a package, one record a word. An empty `hwRev` leaves the revision list out.
inline std::string PackageText(std::int32_t model, const std::string& hwRev,
                               const std::vector<PackageDevice>& devices) {
  QalHeader header;
  header.ModelNumber = model;
  header.HwRev = hwRev;
  std::string blocks;
  for (const PackageDevice& device : devices) {
    const std::string id = "FW" + std::to_string(header.Devices.size()) + "_" + device.version;
    header.Devices.push_back(device.name + ", " + std::to_string(device.address) + ", " + id);
    std::string records;
    for (const auto& [word, value] : device.words) {
      const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(value % 256),
                                              static_cast<std::uint8_t>(value / 256)};
      records += QalHexLine(static_cast<std::uint16_t>(word * 2), bytes);
    }
    blocks += QalBlock(id, records);
  }
  return QalHeaderText(header) + blocks;
}

}  // namespace tarnwick::test
