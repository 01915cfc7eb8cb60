#include "mount/Endpoint.h"

namespace tarnwick::mount {

wire::Bytes Endpoint::Receive(wire::ByteView bytes, Time now) {
  wire::Bytes out = Tick(now);
  mReader.Push(bytes);
  mLast = now;
  Answer(out);
  return out;
}

wire::Bytes Endpoint::Tick(Time now) {
  wire::Bytes out;
  if (!mReader.Waiting() || now - mLast < kGap) return out;
  while (mReader.Waiting()) {
    mReader.GiveUp();
    Answer(out);
  }
  return out;
}

std::optional<Endpoint::Time> Endpoint::Due() const {
  if (!mReader.Waiting()) return std::nullopt;
  return mLast + kGap;
}

void Endpoint::Answer(wire::Bytes& out) {
  while (const std::optional<wire::Frame> request = mReader.Next()) {
    const std::optional<wire::Frame> answer = mMount.Handle(*request);
    if (!answer) continue;
    const wire::Bytes bytes = wire::Encode(*answer);
    out.insert(out.end(), bytes.begin(), bytes.end());
  }
}

}  // namespace tarnwick::mount
