// The mount's end of the line: bytes in, bytes out, on a time that is handed in.
#pragma once

#include <chrono>

#include "mount/Mount.h"
#include "tarnwick/Frame.h"

namespace tarnwick::mount {

/// A frame that does not go on for this long was noise.
inline constexpr std::chrono::microseconds kGap = std::chrono::milliseconds(120);

class Endpoint {
 public:
  using Time = std::chrono::microseconds;  ///< Since some fixed moment.

  /// `mount` must outlive the endpoint.
  explicit Endpoint(Mount& mount) : mMount(mount) {}

  /// Takes bytes that came in at `now`; gives the bytes to send.
  wire::Bytes Receive(wire::ByteView bytes, Time now);
  /// To be called when `Due` has come; gives the bytes to send.
  wire::Bytes Tick(Time now);
  /// When `Tick` has something to do, if nothing comes in before.
  std::optional<Time> Due() const;
  /// Forgets a frame that was coming in, as a power cycle does.
  void Clear() { mReader.Clear(); }

 private:
  void Answer(wire::Bytes& out);

  Mount& mMount;
  wire::RequestReader mReader;
  Time mLast{};  ///< When the last byte came in.
};

}  // namespace tarnwick::mount
