// The serial line in front of the mount, as it is played: how fast bytes travel, how late and in what
// pieces answers arrive, and what is heard when the two ends' speeds differ.
#pragma once

#include <deque>
#include <functional>

#include "mount/Endpoint.h"

namespace tarnwick::mount {

struct LineSetup {
  bool paced = false;        ///< Each byte takes its ten bits' time; else none.
  Endpoint::Time latency{};  ///< How long an adapter holds back what the mount sends.
  std::size_t piece = 0;     ///< Most bytes that arrive together, a millisecond apart; 0 for no limit.
  int poorAbove = wire::kSpeeds.back();  ///< At faster speeds the line damages one byte in 23.
};

class Line {
 public:
  using Time = Endpoint::Time;
  using Damage = std::function<void(wire::Bytes&)>;

  /// `endpoint` must outlive the line.
  explicit Line(Endpoint& endpoint) : mEndpoint(endpoint) {}

  LineSetup setup;
  Time delay{};      ///< Answers are held back for so much longer.
  Damage toMount;    ///< Applied to each piece that is sent to the mount, before it travels.
  Damage toLibrary;  ///< Applied to what the mount sends upon each piece; that may be nothing.

  /// Takes what the far end, set to `farSpeed`, sends from `now` on.
  void Send(wire::ByteView bytes, int farSpeed, Time now);
  /// What has arrived at the far end, set to `farSpeed`, by `now`. To be called when `Due` has come.
  wire::Bytes Take(int farSpeed, Time now);
  /// When there is something to do, if nothing is sent before.
  std::optional<Time> Due() const;
  /// Forgets what is under way and what the mount has heard of a frame, as a power cycle does.
  void Clear();

 private:
  struct Travelling {
    Time arrives;
    wire::Bytes bytes;
  };
  wire::Bytes Played(wire::ByteView bytes, int sentAt, int heardAt);
  Time TimeOf(std::size_t bytes, int speed) const;
  void Answer(wire::Bytes bytes, int speed, int farSpeed, Time now);

  Endpoint& mEndpoint;
  std::deque<Travelling> mComing;   ///< To the mount.
  std::deque<Travelling> mLeaving;  ///< To the far end.
  Time mComingFree{};               ///< When the last byte of that direction has been sent.
  Time mLeavingFree{};
  std::size_t mCount = 0;  ///< Bytes that travelled over a poor line.
};

/// What a receiver set to `heardAt` makes of bytes sent without a pause at `sentAt` bits per second: it
/// samples the bits as a serial port does.
wire::Bytes Heard(wire::ByteView sent, int sentAt, int heardAt);

}  // namespace tarnwick::mount
