// A package made from hex files. docs/package-format.md tells the format.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "HexFile.h"

namespace tarnwick::qalmake {

/// Words FIRST to LAST.
using WordRange = std::pair<std::uint32_t, std::uint32_t>;

/// What one hex file is for.
struct Part {
  std::string file;                  ///< As it is told.
  std::string text;                  ///< Of the hex file.
  std::string version;               ///< Four digits.
  std::vector<std::string> devices;  ///< "name, address"
};

/// All that a package says beside its words; texts in Windows-1252.
struct Wish {
  std::string fileName;
  std::string date;
  std::string comments;
  std::int32_t model = 0;
  std::string modelName;
  std::string hwRev;
  std::string
      recordId;  ///< What stands in front of the version, and of the part's number where there are two.
  std::vector<WordRange> leaveOut;
  std::vector<Part> parts;
};

/// What became of it.
struct Made {
  std::string package;               ///< Empty where there is a fault.
  std::vector<std::string> faults;   ///< Why there is no package.
  std::vector<std::string> remarks;  ///< What the maker should know.
};

/// Makes the package, reads it back, and compares it word by word with the hex files.
Made MakePackage(const Wish& wish);

}  // namespace tarnwick::qalmake
