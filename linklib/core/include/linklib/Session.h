// One open line: asks and gets answers, with time-outs and repeats as docs/link-protocol.md tells.
#pragma once

#include <memory>
#include <span>

#include "linklib/ReplyReader.h"
#include "linklib/Surroundings.h"
#include "linklib/Trace.h"

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
  /// Owns `port`, which `opener` has opened at the base speed; `opener`, `clock` and `trace` must outlive the
  /// session. `firstSequence` should differ from session to session, so that an answer left over from the
  /// last one is not taken for an early one of this.
  Session(std::unique_ptr<serial::ILine> port, IPortOpener& opener, IClock& clock, Trace& trace,
          std::uint8_t firstSequence);

  /// A request with the next number.
  Frame Request(std::uint8_t address, Command command, Bytes payload = {});
  /// One exchange: the request is sent as often as there are waits, and all is over at `end`. A line that
  /// goes is closed and ends the exchange at once; the next one opens the same adapter again, or is over at
  /// once where that is not there. A request may be given again, as another repetition of itself.
  Answer Exchange(const Frame& request, Waits waits, Duration end);

  /// Blocks that follow each other travel in short frames from now on; each repetition is a whole one.
  void SendShort() { mShort = true; }

  /// Sets the speed of this end. False when the line cannot take it and stays as it was.
  bool Speed(int speed);
  int Speed() const { return mSpeed; }
  Duration Now() { return mClock.Now(); }
  bool Gone() const { return mPort == nullptr; }
  /// Why the line went; none while it stands.
  std::error_code Cause() const { return mCause; }
  /// How often a request was sent again, over the whole session.
  std::int32_t Repeats() const { return mRepeats; }

 private:
  Answer Send(const Frame& request, bool brief, Waits waits, Duration end);
  std::optional<Frame> Listen(Duration until, Duration end);
  Duration OnTheLine(std::size_t bytes) const;
  void Return();
  Outcome Failure() const;

  std::unique_ptr<serial::ILine> mPort;  ///< Null once the line is gone.
  IPortOpener& mOpener;
  IClock& mClock;
  Trace& mTrace;
  ReplyReader mReader;
  std::uint8_t mSequence;
  int mSpeed = kBaseSpeed;
  std::error_code mCause;  ///< Set while the line is gone.
  bool mShort = false;
  std::optional<Known> mNext;  ///< The block that both ends expect now.
  std::int32_t mRepeats = 0;
};

}  // namespace tarnwick::wire
