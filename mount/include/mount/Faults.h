// What goes wrong between a program and the mount, played on purpose and by a seed: noise on the line,
// late answers, a power cut or a pulled cable at a chosen byte, and devices that lie.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "mount/Lies.h"
#include "mount/Line.h"
#include "mount/Mount.h"

namespace tarnwick::mount {

/// The faults that are played, for `--help`.
std::string_view FaultUsage();

class Faults {
 public:
  using Say = Lies::Say;

  /// Puts itself between `line` and `mount`, which both must live as long; `say` is told what is played.
  Faults(Mount& mount, Line& line, Say say = {});
  ~Faults();
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;

  /// Plays one fault from now on, told in words as `FaultUsage` has them. False when they make no sense.
  bool Play(const std::vector<std::string_view>& words);
  bool Play(std::string_view text);

  /// Switches the mount off and on, whether it had power or not.
  void Power();
  /// Plugs the cable in.
  void Plug();
  /// True while power is cut, the cable pulled or the adapter gone.
  bool Away() const { return mAway != Break::None; }
  /// True while the adapter is unplugged, so that the terminal itself is gone.
  bool Vanished() const { return mAway == Break::Vanish; }
  /// Bytes that either end has sent since the last cut or pull was asked for, counted before noise.
  std::uint64_t Count() const { return mCount; }

 private:
  enum Way : std::size_t { kIn, kOut, kWays };
  enum class Break { None, Cut, Torn, Pull, Vanish };
  /// Shares of the bytes that are hit.
  struct Noise {
    double flip = 0;
    double drop = 0;
    double insert = 0;
    double twice = 0;
  };

  bool PlayNoise(const std::vector<std::string_view>& words);
  bool PlayRate(const std::vector<std::string_view>& words);
  bool PlayStrays(const std::vector<std::string_view>& words);
  bool PlayStuck(const std::vector<std::string_view>& words);
  bool PlayRefusal(const std::vector<std::string_view>& words);
  bool PlayBreak(const std::vector<std::string_view>& words);
  void Clear();

  void Pass(wire::Bytes& bytes, Way way);
  void BreakAt(wire::Bytes& bytes, Way way);
  void CutPower();
  void InVain();
  void Damage(wire::Bytes& bytes, Way way);

  Mount& mMount;
  Line& mLine;
  Say mSay;
  Dice mDice;
  Lies mLies;
  std::array<Noise, kWays> mNoise;
  double mLate = 0;
  Line::Time mLateBy{};
  std::uint64_t mCount = 0;
  Break mPlanned = Break::None;
  std::uint64_t mAt = 0;        ///< The byte at which the planned break comes, from 1.
  std::uint32_t mSendings = 0;  ///< So many sendings in vain end the break; 0 for never.
  Break mAway = Break::None;
};

}  // namespace tarnwick::mount
