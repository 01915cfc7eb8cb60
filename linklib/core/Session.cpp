#include "linklib/Session.h"

#include <algorithm>
#include <array>

namespace tarnwick::wire {
namespace {

/// No new sending before the line was quiet for this long: an answer may be trickling in.
constexpr Duration kQuiet = std::chrono::milliseconds(150);

}  // namespace

Session::Session(std::unique_ptr<serial::ILine> port, IClock& clock, Trace& trace, std::uint8_t firstSequence)
    : mPort(Traced(std::move(port), trace)), mClock(clock), mTrace(trace), mSequence(firstSequence) {}

bool Session::Speed(int speed) {
  if (mPort->Speed(speed)) return false;
  mSpeed = speed;
  return true;
}

Duration Session::OnTheLine(std::size_t bytes) const {
  return Duration(static_cast<std::int64_t>(bytes) * kBitsPerByte * 1'000'000 / mSpeed);
}

Frame Session::Request(std::uint8_t address, Command command, Bytes payload) {
  return {Kind::Request, command, mSequence++, address, std::move(payload)};
}

Answer Session::Exchange(const Frame& request, Waits waits, Duration end) {
  const Bytes bytes = Encode(request);
  const Duration line = OnTheLine(bytes.size() + AnswerLength(request));
  std::size_t sending = 0;
  bool busy = false;
  mReader.Expect(request);
  for (const std::chrono::milliseconds wait : waits) {
    const Duration now = mClock.Now();
    if (Gone() || now >= end) break;
    mTrace.Sent(request, ++sending);
    if (sending > 1) ++mRepeats;
    mCause = mPort->Write(bytes, end - now);
    std::optional<Frame> reply = Listen(now + wait + line, end);
    if (!reply) continue;
    mTrace.Received(*reply);
    busy = reply->kind == Kind::Refused && reply->payload[0] == static_cast<std::uint8_t>(Reason::Busy);
    if (!busy)
      return {reply->kind == Kind::Done ? Outcome::Done : Outcome::Refused, std::move(reply->payload)};
    Listen(mClock.Now() + wait, end);
  }
  if (busy && !Gone()) return {Outcome::Refused, {static_cast<std::uint8_t>(Reason::Busy)}};
  mTrace.Note(Trace::kFrames, Gone() ? "the line is gone" : "no answer");
  return {Failure(), {}};
}

/// Reads until the answer is there, or `until` has passed and the line is quiet, or `end` has passed.
std::optional<Frame> Session::Listen(Duration until, Duration end) {
  std::array<std::uint8_t, 256> buffer{};
  until = std::min(until, end);
  for (Duration now = mClock.Now(); !Gone() && now < until; now = mClock.Now()) {
    const std::size_t count = mPort->Read(buffer, until - now, mCause);
    if (count == 0) continue;
    if (std::optional<Frame> reply = mReader.Push(std::span(buffer).first(count))) return reply;
    until = std::min(std::max(until, mClock.Now() + kQuiet), end);
  }
  return std::nullopt;
}

Outcome Session::Failure() const {
  if (Gone()) return Outcome::Gone;
  if (mReader.SawOthers()) return Outcome::Foreign;
  if (mReader.SawEcho()) return Outcome::Echo;
  return mReader.SawBytes() ? Outcome::Noise : Outcome::Silent;
}

}  // namespace tarnwick::wire
