#include "linklib/Session.h"

#include <algorithm>
#include <array>

namespace tarnwick::wire {
namespace {

/// No new sending before what may be the answer paused for this long: it may be trickling in. But never so
/// much later than without it.
constexpr Duration kQuiet = std::chrono::milliseconds(150);
constexpr Duration kMostPutOff = std::chrono::milliseconds(400);

bool IsBusy(const Frame& reply) {
  return reply.kind == Kind::Refused && reply.payload[0] == static_cast<std::uint8_t>(Reason::Busy);
}

}  // namespace

Session::Session(std::unique_ptr<serial::ILine> port, IPortOpener& opener, IClock& clock, Trace& trace,
                 std::uint8_t firstSequence)
    : mPort(Traced(std::move(port), trace)),
      mOpener(opener),
      mClock(clock),
      mTrace(trace),
      mSequence(firstSequence) {}

bool Session::Speed(int speed) {
  if (!mPort || mPort->Speed(speed)) return false;
  mSpeed = speed;
  return true;
}

/// What was agreed on with the mount stays: speed, numbers and, on the mount's side, the last request.
void Session::Return() {
  std::error_code error;
  std::unique_ptr<serial::ILine> port = mOpener.OpenAgain(error);
  mTrace.Note(Trace::kPort, port ? "opened again" : "not there: " + error.message());
  if (!port) return;
  mPort = Traced(std::move(port), mTrace);
  mCause.clear();
  if (!Speed(mSpeed)) mSpeed = kBaseSpeed;
}

Duration Session::OnTheLine(std::size_t bytes) const {
  return Duration(static_cast<std::int64_t>(bytes) * kBitsPerByte * 1'000'000 / mSpeed);
}

Frame Session::Request(std::uint8_t address, Command command, Bytes payload) {
  return {Kind::Request, command, mSequence++, address, std::move(payload)};
}

/// A block that follows the one before is sent short for its first time. Whatever else is sent ends that,
/// and so does a block that was not acknowledged.
Answer Session::Exchange(const Frame& request, Waits waits, Duration end) {
  if (Gone()) Return();
  const bool write = IsWrite(request.command);
  const bool brief = mShort && write && mNext == KnownOf(request);
  mNext.reset();
  Answer answer = Send(request, brief, waits, end);
  if (write && answer.Done()) mNext = FollowerOf(request);
  return answer;
}

Answer Session::Send(const Frame& request, bool brief, Waits waits, Duration end) {
  Frame sent = request;
  if (brief) sent.brief = KnownOf(request).first;
  std::size_t sending = 0;
  bool busy = false;
  mReader.Expect(request, brief);
  for (const std::chrono::milliseconds wait : waits) {
    const Duration now = mClock.Now();
    if (Gone() || now >= end) break;
    mTrace.Sent(sent, ++sending);
    if (sending > 1) ++mRepeats;
    const Bytes bytes = Encode(sent);
    mCause = mPort->Write(bytes, end - now);
    std::optional<Frame> reply = Listen(now + wait + OnTheLine(bytes.size() + AnswerLength(request)), end);
    sent.brief.reset();
    if (!reply) continue;
    mTrace.Received(*reply);
    busy = IsBusy(*reply);
    if (!busy)
      return {reply->kind == Kind::Done ? Outcome::Done : Outcome::Refused, std::move(reply->payload)};
    Listen(mClock.Now() + wait, end);
  }
  if (busy && !Gone()) return {Outcome::Refused, {static_cast<std::uint8_t>(Reason::Busy)}};
  mTrace.Note(Trace::kFrames, Gone() ? "the line is gone" : "no answer");
  return {Failure(), {}};
}

/// Reads until the answer is there, or `until` has passed and no answer is on its way, or `end` has passed.
/// Closes a line that is gone, so that the system can give its adapter the same name again.
std::optional<Frame> Session::Listen(Duration until, Duration end) {
  std::array<std::uint8_t, 256> buffer{};
  const Duration latest = std::min(until + kMostPutOff, end);
  until = std::min(until, end);
  for (Duration now = mClock.Now(); !mCause && now < until; now = mClock.Now()) {
    const std::size_t count = mPort->Read(buffer, until - now, mCause);
    if (count == 0) continue;
    if (std::optional<Frame> reply = mReader.Push(std::span(buffer).first(count))) return reply;
    if (mReader.MayGoOn()) until = std::min(std::max(until, mClock.Now() + kQuiet), latest);
  }
  if (mCause) mPort.reset();
  return std::nullopt;
}

Outcome Session::Failure() const {
  if (Gone()) return Outcome::Gone;
  if (mReader.SawOthers()) return Outcome::Foreign;
  if (mReader.SawEcho()) return Outcome::Echo;
  return mReader.SawBytes() ? Outcome::Noise : Outcome::Silent;
}

}  // namespace tarnwick::wire
