// The mount's end of the line: bytes in, bytes out, on a time that is handed in.
#pragma once

#include <chrono>

#include "linklib/Frame.h"
#include "mount/Mount.h"

namespace tarnwick::mount {

/// A frame that does not go on for this long was noise.
inline constexpr std::chrono::microseconds kGap = std::chrono::milliseconds(40);
/// With no request understood for this long after a change of speed, or after the first byte that was
/// none, the mount goes back to the speed of switching on.
inline constexpr std::chrono::microseconds kLost = std::chrono::milliseconds(500);

/// Another mount's end can stand in its place.
class Endpoint {
 public:
  using Time = std::chrono::microseconds;  ///< Since some fixed moment.

  /// `mount` must outlive the endpoint.
  explicit Endpoint(Mount& mount) : mMount(mount) {}
  virtual ~Endpoint() = default;

  /// Takes bytes that came in at `now`; gives the bytes to send.
  virtual wire::Bytes Receive(wire::ByteView bytes, Time now);
  /// To be called when `Due` has come; gives the bytes to send.
  virtual wire::Bytes Tick(Time now);
  /// When `Tick` has something to do, if nothing comes in before.
  virtual std::optional<Time> Due() const;
  /// Forgets a frame that was coming in, as a power cycle does.
  virtual void Clear();
  /// Speed of the mount's end of the line.
  virtual int Speed() const { return mMount.Speed(); }

 private:
  void Answer(wire::Bytes& out, Time now);
  std::optional<wire::Frame> Hear(const wire::Frame& request, Time now);
  void Follow(const wire::Frame& request, const wire::Frame& answer);

  Mount& mMount;
  wire::RequestReader mReader;
  Time mLast{};       ///< When the last byte came in.
  wire::Bytes mHeld;  ///< The answer to what the mount is busy with.
  Time mBusyUntil{};  ///< When it is sent.
  std::optional<Time>
      mNotUnderstoodSince;  ///< Since when no request was understood, or the speed not confirmed.
};

}  // namespace tarnwick::mount
