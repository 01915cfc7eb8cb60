// The packages of a visit, and what a device's memory holds with each.
#pragma once

#include <string>
#include <vector>

#include "mount/Memory.h"
#include "support/PackageText.h"

namespace tarnwick::test {

inline const std::vector<std::string> kPackages{"A.qal", "B.qal", "Empty.qal"};

inline constexpr int kRevision = 5;

/// No two devices or packages have a word in common, and each image fills its blocks.
inline ImageWords Words(const std::string& package, int address) {
  ImageWords words = CountedWords(package == "A.qal" ? 31 : 23);
  for (auto& [index, word] : words) word += (package == "A.qal" ? 0 : 0x100) + (address - 16) * 0x200;
  return words;
}

inline std::string Content(const std::string& name) {
  if (name == "Empty.qal") return PackageText(5, "5", {});
  return PackageText(5, "5", {{"Azm", 16, Words(name, 16)}, {"Alt", 17, Words(name, 17)}});
}

using Image = std::vector<std::uint16_t>;

inline Image Read(const mount::Memory& memory) {
  Image image(memory.ImageWords());
  for (std::uint32_t i = 0; i < memory.ImageWords(); ++i) image[i] = memory.ImageWord(i);
  return image;
}

/// What a device's memory holds with that package.
inline Image Whole(const std::string& package, int address) {
  mount::Memory memory(kRevision);
  memory.Loader(true);
  for (const auto& [index, word] : Words(package, address)) {
    memory.ImageWord(static_cast<std::uint32_t>(index), static_cast<std::uint16_t>(word));
  }
  return Read(memory);
}

}  // namespace tarnwick::test
