#include "mount/Endpoint.h"

#include <algorithm>

namespace tarnwick::mount {

wire::Bytes Endpoint::Receive(wire::ByteView bytes, Time now) {
  wire::Bytes out = Tick(now);
  if (!mHeld.empty() && mMount.Link().busy.deaf) return out;
  mReader.Push(bytes);
  mLast = now;
  if (!mNotUnderstoodSince && !bytes.empty()) mNotUnderstoodSince = now;
  Answer(out, now);
  return out;
}

wire::Bytes Endpoint::Tick(Time now) {
  wire::Bytes out;
  if (!mHeld.empty() && now >= mBusyUntil) out.swap(mHeld);
  if (mReader.Waiting() && now - mLast >= kGap) {
    while (mReader.Waiting()) {
      mReader.GiveUp();
      Answer(out, now);
    }
  }
  if (mNotUnderstoodSince && now - *mNotUnderstoodSince >= kLost) {
    mMount.ToHomeSpeed();
    mNotUnderstoodSince.reset();
  }
  return out;
}

std::optional<Endpoint::Time> Endpoint::Due() const {
  std::optional<Time> due;
  if (mReader.Waiting()) due = mLast + kGap;
  if (!mHeld.empty()) due = std::min(due.value_or(Time::max()), mBusyUntil);
  if (mNotUnderstoodSince) due = std::min(due.value_or(Time::max()), *mNotUnderstoodSince + kLost);
  return due;
}

void Endpoint::Clear() {
  mReader.Clear();
  mHeld.clear();
  mNotUnderstoodSince.reset();
}

void Endpoint::Answer(wire::Bytes& out, Time now) {
  while (const std::optional<wire::Frame> request = mReader.Next()) {
    const int speed = mMount.Speed();
    const auto takes = mMount.IsRepeated(*request) ? Time{} : Time(mMount.TimeOf(request->command));
    const std::optional<wire::Frame> answer = Hear(*request, now);
    mNotUnderstoodSince.reset();
    if (mMount.Speed() != speed) mNotUnderstoodSince = now;
    if (!answer) continue;
    Follow(*request, *answer);
    const wire::Bytes bytes = wire::Encode(*answer);
    const bool slow = takes > Time{} && answer->kind == wire::Kind::Done && mHeld.empty();
    if (slow) mBusyUntil = now + takes;
    wire::Bytes& sent = slow ? mHeld : out;
    sent.insert(sent.end(), bytes.begin(), bytes.end());
  }
}

/// A mount that is busy with one request refuses all others, and that one too.
std::optional<wire::Frame> Endpoint::Hear(const wire::Frame& request, Time now) {
  if (mHeld.empty() || now >= mBusyUntil) return mMount.Hear(request);
  wire::Frame refusal = request;
  refusal.kind = wire::Kind::Refused;
  refusal.payload = {static_cast<std::uint8_t>(wire::Reason::Busy)};
  return refusal;
}

/// After a block its repetition may come in the short form, and the one that follows it. After anything else
/// nothing may.
void Endpoint::Follow(const wire::Frame& request, const wire::Frame& answer) {
  const bool written = wire::IsWrite(request.command) && answer.kind == wire::Kind::Done;
  if (!written || mMount.Link().first) return mReader.Know({});
  mReader.Know({wire::KnownOf(request), wire::FollowerOf(request)});
}

}  // namespace tarnwick::mount
