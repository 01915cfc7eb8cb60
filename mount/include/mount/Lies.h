// Devices that do not do what they say, for trying out how a program bears with them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "linklib/Frame.h"
#include "mount/Mount.h"

namespace tarnwick::mount {

/// Chance that is the same for the same seed on every machine.
class Dice {
 public:
  void Seed(std::uint32_t seed) { mRandom.seed(seed); }
  /// A number from 0 to `count` - 1.
  std::uint32_t Below(std::uint32_t count) { return static_cast<std::uint32_t>(mRandom()) % count; }
  /// True at that rate: never at 0, always at 1.
  bool Hit(double rate) { return rate > 0 && static_cast<double>(mRandom()) < rate * 4294967296.0; }

 private:
  std::mt19937 mRandom{1};
};

class Lies {
 public:
  using Say = std::function<void(const std::string&)>;

  /// A bit of a device's word, numbered in package order, that always reads the same.
  struct Stuck {
    std::uint8_t address;
    std::uint16_t word;
    std::uint16_t mask;  ///< The one bit.
    bool high;
  };
  struct Refusal {
    std::uint32_t times = 0;
    wire::Reason reason = wire::Reason::Busy;
  };

  double unstored = 0;  ///< Share of the blocks that are acknowledged and not stored.
  double old = 0;       ///< Share of the answers in whose place the answer before is sent again.
  std::vector<Stuck> stuck;
  std::map<wire::Command, Refusal> refusals;
  /// The next block is stored in part, one word of it torn, and not answered.
  bool tear = false;

  /// All references must outlive the lies; `say` is told each lie as it happens.
  Lies(Mount& mount, Dice& dice, const Say& say) : mMount(mount), mDice(dice), mSay(say) {}

  /// Answers a request in place of `Mount::Handle`.
  std::optional<wire::Frame> Handle(const wire::Frame& request);

 private:
  std::optional<wire::Frame> Refuse(const wire::Frame& request);
  std::optional<wire::Frame> Write(const wire::Frame& request);
  std::optional<wire::Frame> Tear(const wire::Frame& request, Device& device);
  void KeepStuck();

  Mount& mMount;
  Dice& mDice;
  const Say& mSay;
  std::optional<wire::Frame> mBefore;  ///< The last true answer.
};

}  // namespace tarnwick::mount
