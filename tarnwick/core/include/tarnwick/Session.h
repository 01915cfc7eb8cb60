// One open line: asks and gets answers, with time-outs and repeats as docs/link-protocol.md tells.
#pragma once

#include <memory>
#include <span>

#include "tarnwick/ISerialPort.h"
#include "tarnwick/ReplyReader.h"
#include "tarnwick/Trace.h"

namespace tarnwick::wire {

/// How an exchange ended.
enum class Outcome {
  Done,     ///< The payload is the answer's.
  Refused,  ///< The payload is the reason.
  Silent,   ///< Not one byte came.
  Noise,    ///< Bytes came, but no valid frame.
  Echo,     ///< Only the request itself came back.
  Foreign,  ///< Valid frames came, but not the answer.
  Gone,     ///< The line hung up or failed.
};

struct Answer {
  Outcome outcome = Outcome::Gone;
  Bytes payload;

  bool Done() const { return outcome == Outcome::Done; }
  bool Refused(Reason reason) const {
    return outcome == Outcome::Refused && payload[0] == static_cast<std::uint8_t>(reason);
  }
  /// No answer came, yet the line stands.
  bool Lost() const { return !Done() && outcome != Outcome::Refused && outcome != Outcome::Gone; }
};

/// One wait for the first byte of an answer for each sending of a request, beside the time on the line.
using Waits = std::span<const std::chrono::milliseconds>;

class Session {
 public:
  /// Owns `port`, which is at the base speed; `clock` and `trace` must outlive the session.
  /// `firstSequence` should differ from session to session, so that an answer left over from the last
  /// one is not taken for an early one of this.
  Session(std::unique_ptr<ISerialPort> port, IClock& clock, Trace& trace, std::uint8_t firstSequence);

  /// A request with the next number.
  Frame Request(std::uint8_t address, Command command, Bytes payload = {});
  /// One exchange: the request is sent as often as there are waits, and all is over at `end`. Once the
  /// line is gone, each further exchange is over at once. A request may be given again, as another
  /// repetition of itself.
  Answer Exchange(const Frame& request, Waits waits, Duration end);

  /// Sets the speed of this end. False when the line cannot take it.
  bool Speed(int speed);
  int Speed() const { return mSpeed; }
  Duration Now() { return mClock.Now(); }

 private:
  std::optional<Frame> Listen(Duration until, Duration end);
  Duration OnTheLine(std::size_t bytes) const;
  Outcome Failure() const;

  std::unique_ptr<ISerialPort> mPort;
  IClock& mClock;
  Trace& mTrace;
  ReplyReader mReader;
  std::uint8_t mSequence;
  int mSpeed = kBaseSpeed;
  bool mGone = false;
};

}  // namespace tarnwick::wire
