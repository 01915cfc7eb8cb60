// The program memory of a simulated device.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnwick::mount {

/// Words are numbered in two ways. As the memory does: a word's place. As an image does (package
/// order): the same, except that below revision 4 words 0 to 3 of an image lie at 0xFFFC to 0xFFFF,
/// since places 0 to 3 belong to the boot loader there.
class Memory {
 public:
  /// An erased memory of a device of that hardware revision.
  explicit Memory(int revision);

  /// Erases all but the boot loader's own words.
  void Erase();
  /// Puts a renewed (or, with false, an old) boot loader in place.
  void Loader(bool renewed);

  /// True when the memory has a word at `place`.
  bool HasPlace(std::uint32_t place) const;
  /// True when an image may have a word of that index.
  bool HasImageWord(std::uint32_t index) const { return index < ImageWords(); }
  /// Number of words that an image may have.
  std::uint32_t ImageWords() const;

  /// The word at a place that the memory has.
  std::uint16_t At(std::uint32_t place) const { return mWords[place]; }
  /// An image's word, by an index that it may have.
  std::uint16_t ImageWord(std::uint32_t index) const { return mWords[PlaceOf(index)]; }
  void ImageWord(std::uint32_t index, std::uint16_t word) { mWords[PlaceOf(index)] = word; }

 private:
  bool Small() const { return mRevision < 4; }
  std::uint32_t PlaceOf(std::uint32_t index) const;

  int mRevision;
  std::vector<std::uint16_t> mWords;
};

}  // namespace tarnwick::mount
