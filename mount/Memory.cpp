#include "mount/Memory.h"

#include <algorithm>
#include <array>

namespace tarnwick::mount {
namespace {

constexpr std::uint32_t kPlaces = 0x10000;
constexpr std::uint32_t kSmallPlaces = 0x4000;
constexpr std::uint32_t kVectors = 4;            ///< Words 0 to 3.
constexpr std::uint32_t kMovedVectors = 0xFFFC;  ///< Where a small memory keeps those of an image.
constexpr std::uint16_t kErasedSmall = 0x3FFF;
constexpr std::uint16_t kErased = 0xFFFF;

/// The boot loader's own words at places 0 to 3: the jump to its start.
constexpr std::array<std::uint16_t, kVectors> kOldJump = {0x128A, 0x120A, 0x2800, 0x3FFF};
constexpr std::array<std::uint16_t, kVectors> kNewJump = {0x160A, 0x158A, 0x2F00, 0x3FFF};

}  // namespace

Memory::Memory(int revision) : mRevision(revision), mWords(kPlaces) {
  Erase();
}

void Memory::Erase() {
  const auto first = mWords.begin() + (Small() ? kVectors : 0);
  std::fill(first, mWords.end(), Small() ? kErasedSmall : kErased);
}

void Memory::Loader(bool renewed) {
  const auto& jump = renewed ? kNewJump : kOldJump;
  if (Small()) std::copy(jump.begin(), jump.end(), mWords.begin());
}

bool Memory::HasPlace(std::uint32_t place) const {
  return place < (Small() ? kSmallPlaces : kPlaces) || (place >= kMovedVectors && place < kPlaces);
}

std::uint32_t Memory::ImageWords() const {
  return Small() ? kSmallPlaces : kPlaces;
}

std::uint32_t Memory::PlaceOf(std::uint32_t index) const {
  return Small() && index < kVectors ? kMovedVectors + index : index;
}

}  // namespace tarnwick::mount
