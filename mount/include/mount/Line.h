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
  Endpoint::Time hold{};  ///< An adapter hands on at such times alone what came in, or when it is full.
  Endpoint::Time handControl{};         ///< What a hand control needs to pass a request on to a device.
  int roundsTo = wire::kSpeeds.back();  ///< A driver takes this for each faster speed, and says nothing.
};

/// Bytes that come up on the line by themselves, each way.
struct Strays {
  Endpoint::Time least{};  ///< The time from one to the next.
  Endpoint::Time most{};   ///< 0 for none.
};

class Line {
 public:
  using Time = Endpoint::Time;
  using Damage = std::function<void(wire::Bytes&)>;

  /// `endpoint` must outlive the line.
  explicit Line(Endpoint& endpoint) : mEndpoint(endpoint) {}

  LineSetup setup;
  Strays strays;
  std::function<std::uint32_t(std::uint32_t count)> chance;  ///< 0 to `count` - 1; for the strays.
  Time delay{};                                              ///< Answers are held back for so much longer.
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
    Time begins;
    Time arrives;
    wire::Bytes bytes;
  };
  using Queue = std::deque<Travelling>;
  wire::Bytes Played(wire::ByteView bytes, int sentAt, int heardAt);
  Time TimeOf(std::size_t bytes, int speed) const;
  void Answer(wire::Bytes bytes, int speed, int farSpeed, Time now);
  void Deliver(int farSpeed);
  void Stray();
  void PlanStray(Time now);
  Time HandedOn(Time arrives) const;

  Endpoint& mEndpoint;
  Queue mComing;   ///< To the mount.
  Queue mLeaving;  ///< To the far end.
  std::optional<Time> mNextStray;
  Time mComingFree{};  ///< When the last byte of that direction has been sent.
  Time mLeavingFree{};
  std::size_t mCount = 0;  ///< Bytes that travelled over a poor line.
};

/// What a receiver set to `heardAt` makes of bytes sent without a pause at `sentAt` bits per second: it
/// samples the bits as a serial port does.
wire::Bytes Heard(wire::ByteView sent, int sentAt, int heardAt);

}  // namespace tarnwick::mount
