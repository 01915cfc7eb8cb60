// Intel HEX files as compilers write them: records of type 00 to 05.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::qalmake {

/// A word of program memory as a hex file gives it.
struct HexWord {
  std::uint32_t index = 0;  ///< Byte address / 2.
  std::uint8_t lo = 0, hi = 0;
  bool hasLo = false, hasHi = false;
};

/// Bytes at addresses of 32 bits. Memory follows what is given.
class HexBytes {
 public:
  /// Puts `values` at `address` and behind; they end below 2^32. False where another value is there already.
  bool Put(std::uint32_t address, std::span<const std::uint8_t> values);
  /// All words of which at least one byte was given, ascending.
  std::vector<HexWord> Words() const;

 private:
  static constexpr std::size_t kPage = 4096;
  struct Page {
    std::array<std::uint8_t, kPage> values;
    std::array<bool, kPage> given{};
  };
  std::map<std::uint32_t, Page> mPages;  ///< By address / kPage.
  std::uint32_t mNumber = 0;             ///< Of the page that was written last.
  Page* mPage = nullptr;
};

/// Adds what `text` says to `bytes`. Lines end in LF or CR LF. Start addresses (types 03 and 05) are passed
/// over, since a device begins where it begins. What is wrong with the file, with its line, or nothing.
std::string ReadHexFile(std::string_view text, HexBytes& bytes);

}  // namespace tarnwick::qalmake
