#include "mount/Endpoint.h"

#include <algorithm>

namespace tarnwick::mount {

wire::Bytes Endpoint::Receive(wire::ByteView bytes, Time now) {
  wire::Bytes out = Tick(now);
  mReader.Push(bytes);
  mLast = now;
  if (!mStrange && !bytes.empty()) mStrange = now;
  Answer(out, now);
  return out;
}

wire::Bytes Endpoint::Tick(Time now) {
  wire::Bytes out;
  if (mReader.Waiting() && now - mLast >= kGap) {
    while (mReader.Waiting()) {
      mReader.GiveUp();
      Answer(out, now);
    }
  }
  if (mStrange && now - *mStrange >= kLost) {
    mMount.ToHomeSpeed();
    mStrange.reset();
  }
  return out;
}

std::optional<Endpoint::Time> Endpoint::Due() const {
  std::optional<Time> due;
  if (mReader.Waiting()) due = mLast + kGap;
  if (mStrange) due = std::min(due.value_or(Time::max()), *mStrange + kLost);
  return due;
}

void Endpoint::Clear() {
  mReader.Clear();
  mStrange.reset();
}

void Endpoint::Answer(wire::Bytes& out, Time now) {
  while (const std::optional<wire::Frame> request = mReader.Next()) {
    const int speed = mMount.Speed();
    const std::optional<wire::Frame> answer = mMount.Hear(*request);
    mStrange.reset();
    if (mMount.Speed() != speed) mStrange = now;
    if (!answer) continue;
    const wire::Bytes bytes = wire::Encode(*answer);
    out.insert(out.end(), bytes.begin(), bytes.end());
  }
}

}  // namespace tarnwick::mount
