// Finds the image of a record id, with a few bytes for each: an order of the images by their record ids.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "firmware/QalImage.h"

namespace tarnwick {

/// Most numbers lie in one list; the newest in a tree, which joins the list whenever it has become a part of
/// it that counts. So no order of record ids makes it slow.
class QalIds {
 public:
  /// `images` is borrowed.
  explicit QalIds(const QalImages& images) : mImages(&images), mNew(Order{&images}) {}

  std::optional<std::uint32_t> Find(std::string_view recordId) const {
    const Order order{mImages};
    if (const auto found = mNew.find(recordId); found != mNew.end()) return *found;
    const auto found = std::lower_bound(mOld.begin(), mOld.end(), recordId, order);
    if (found == mOld.end() || order(recordId, *found)) return std::nullopt;
    return *found;
  }

  /// Adds an image whose record id is not there yet. Throws when memory cannot be had.
  void Add(std::uint32_t image) {
    mNew.insert(image);
    if (mNew.size() < std::max(kFewest, mOld.size() / kPart)) return;
    const auto middle = static_cast<std::ptrdiff_t>(mOld.size());
    mOld.reserve(mOld.size() + mNew.size());
    mOld.insert(mOld.end(), mNew.begin(), mNew.end());
    mNew.clear();
    std::inplace_merge(mOld.begin(), mOld.begin() + middle, mOld.end(), Order{mImages});
  }

 private:
  static constexpr std::size_t kFewest = 1024;
  static constexpr std::size_t kPart = 64;

  struct Order {
    using is_transparent = void;
    const QalImages* images;
    std::string_view Id(std::uint32_t image) const { return (*images)[image].RecordID; }
    std::string_view Id(std::string_view id) const { return id; }
    bool operator()(const auto& a, const auto& b) const { return Id(a) < Id(b); }
  };

  const QalImages* mImages;
  std::vector<std::uint32_t> mOld;  ///< By record id.
  std::set<std::uint32_t, Order> mNew;
};

}  // namespace tarnwick
