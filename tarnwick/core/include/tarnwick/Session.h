// One open line: asks and gets answers, with time-outs and repeats as docs/link-protocol.md tells.
#pragma once

#include <memory>

#include "tarnwick/ISerialPort.h"
#include "tarnwick/ReplyReader.h"

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
};

/// The longest that one exchange may take.
inline constexpr Duration kExchangeLimit = std::chrono::seconds(4);

class Session {
 public:
  /// Owns `port`; `clock` must outlive the session. `firstSequence` should differ from session to
  /// session, so that an answer left over from the last one is not taken for an early one of this.
  Session(std::unique_ptr<ISerialPort> port, IClock& clock, std::uint8_t firstSequence);

  /// One exchange, repeated as often as told and over within `limit`. Once the line is gone, each
  /// further exchange is over at once.
  Answer Ask(std::uint8_t address, Command command, Bytes payload = {}, Duration limit = kExchangeLimit);

 private:
  std::optional<Frame> Listen(Duration until, Duration end);
  Outcome Failure() const;

  std::unique_ptr<ISerialPort> mPort;
  IClock& mClock;
  ReplyReader mReader;
  std::uint8_t mSequence;
  bool mGone = false;
};

}  // namespace tarnwick::wire
