// What the library tells of its doings in a file, for a person to read; docs/link-protocol.md tells how.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "linklib/Frame.h"
#include "linklib/Surroundings.h"

namespace tarnwick::wire {

/// Writes nothing until a filter is turned on. A file that cannot be written is left alone: tracing
/// never fails a call.
class Trace {
 public:
  static constexpr std::int32_t kFrames = 4;
  static constexpr std::int32_t kPort = 6;
  /// Bytes that the file never exceeds; when it would, its older half goes.
  static constexpr std::uintmax_t kMostBytes = 1 << 20;

  /// An empty `file` keeps it silent. `clock` must outlive the trace.
  Trace(std::filesystem::path file, IClock& clock) : mFile(std::move(file)), mClock(clock) {}

  /// Turns one of the filters on or off; any other number is passed over.
  void Turn(std::int32_t filter, bool on);
  bool On(std::int32_t filter) const;

  /// One frame that goes out, for the `sending`th time, or that came in.
  void Sent(const Frame& frame, std::size_t sending);
  void Received(const Frame& frame);
  /// One line of the filter: what happened, in words.
  void Note(std::int32_t filter, std::string_view text);

 private:
  void Shorten();

  std::filesystem::path mFile;
  IClock& mClock;
  bool mFrames = false;
  bool mPort = false;
};

/// The same port, with all that goes over it told to `trace`, which must outlive it.
std::unique_ptr<serial::ILine> Traced(std::unique_ptr<serial::ILine> port, Trace& trace);

}  // namespace tarnwick::wire
