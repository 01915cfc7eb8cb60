// The words that the blocks of a package give. Memory follows what the text says, and not how far
// apart the addresses are that it says it for.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace tarnwick {

/// A list that grows without moving what it holds, and with little room to spare. `Size` is a power
/// of 2.
template <class Item, std::size_t Size>
class ChunkList {
 public:
  std::size_t size() const { return mSize; }
  Item& operator[](std::size_t index) { return (*mChunks[index / Size])[index % Size]; }
  const Item& operator[](std::size_t index) const { return (*mChunks[index / Size])[index % Size]; }

  /// Appends a new item. Throws when memory cannot be had, and then nothing has changed.
  Item& Add() {
    if (mSize == mChunks.size() * Size) mChunks.push_back(std::make_unique<std::array<Item, Size>>());
    return (*this)[mSize++];
  }

 private:
  std::vector<std::unique_ptr<std::array<Item, Size>>> mChunks;
  std::size_t mSize = 0;
};

/// Texts that stay where they are put, with no memory beside them but for the view.
class QalTexts {
 public:
  /// A copy of `text`, for as long as this object lives. Throws when memory cannot be had.
  std::string_view Add(std::string_view text);

 private:
  std::vector<std::unique_ptr<char[]>> mChunks;
  char* mNext = nullptr;  ///< Room in the last chunk that was not made for one text alone.
  std::size_t mRoom = 0;
};

/// One program memory word, laid out as a record tells it.
struct QalWord {
  std::uint8_t LoByte = 0;
  std::uint8_t HiByte = 0;
};

/// Neighbouring words, the first of them at a multiple of `kWords`.
struct QalRun {
  static constexpr std::size_t kWords = 8;

  /// The last device of the image that was declared when each word was written, 0 if it never was. A record
  /// reaches the devices declared above it, so the image's device d has a word if and only if d <= Devices.
  std::array<std::int32_t, kWords> Devices{};
  std::array<QalWord, kWords> Words{};
};

/// What the hex lines of one record id fill. All devices of that id look at the one image, and
/// `QalRun::Devices` keeps them apart: a hex line costs the same for one device and for a hundred
/// thousand.
struct QalImage {
  std::string_view RecordID;              ///< Upper case.
  std::unique_ptr<std::uint32_t[]> Runs;  ///< Numbers of its runs of words, 0 where there is none.
  std::uint32_t RunCount = 0;
  std::int32_t LastDevice = 0;  ///< The last one declared so far.
};

/// The images of one package. Only runs of words that a record touches take memory.
class QalImages {
 public:
  std::size_t size() const { return mImages.size(); }
  QalImage& operator[](std::size_t image) { return mImages[image]; }
  const QalImage& operator[](std::size_t image) const { return mImages[image]; }
  /// A new, empty image. Throws when memory cannot be had, as `Touch` does.
  QalImage& Add() { return mImages.Add(); }

  /// The run with word `word` of image `image`, made when there was none.
  QalRun& Touch(std::size_t image, std::size_t word) {
    const QalImage& one = mImages[image];
    const std::size_t index = word / QalRun::kWords;
    const std::uint32_t number = index < one.RunCount ? one.Runs[index] : 0;
    return number != 0 ? mRuns[number - 1] : AddRun(image, index);
  }
  /// The same, or none.
  const QalRun* Find(std::size_t image, std::size_t word) const;
  /// The highest word of `image` up to `top` that device number `device` has; 0 when it has none above.
  std::size_t LastWord(std::size_t image, std::size_t top, std::int32_t device) const;
  /// Copies those of the first `to.size()` words of `image` that device number `device` has, and tells
  /// how many they are. The others are left as they were.
  std::size_t Copy(std::size_t image, std::int32_t device, std::span<QalWord> to) const;
  /// As many words as `image` can have at most.
  std::size_t Span(std::size_t image) const { return mImages[image].RunCount * QalRun::kWords; }
  /// Marks in `marks`, by number, each device that has a word which the image's next device has not.
  void MarkLast(std::vector<bool>& marks) const;

 private:
  QalRun& AddRun(std::size_t image, std::size_t index);

  ChunkList<QalImage, 64> mImages;
  ChunkList<QalRun, 64> mRuns;
};

}  // namespace tarnwick
