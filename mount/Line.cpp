#include "mount/Line.h"

#include <algorithm>

namespace tarnwick::mount {
namespace {

/// Pieces of an answer follow each other at this distance when the line itself takes no time.
constexpr Line::Time kBetweenPieces = std::chrono::milliseconds(1);
/// So many bytes of a paced answer a serial port gathers before it hands them on.
constexpr std::size_t kFifo = 8;
constexpr std::size_t kPoorEvery = 23;

/// The level of the line at a bit's number: start bit low, eight bits, lowest first, stop bit high.
bool LevelAt(wire::ByteView sent, std::int64_t bit) {
  constexpr std::int64_t kStop = wire::kBitsPerByte - 1;
  const auto byte = static_cast<std::size_t>(bit / wire::kBitsPerByte);
  const std::int64_t place = bit % wire::kBitsPerByte;
  if (byte >= sent.size() || place == kStop) return true;
  return place != 0 && (sent[byte] >> (place - 1) & 1) != 0;
}

}  // namespace

wire::Bytes Heard(wire::ByteView sent, int sentAt, int heardAt) {
  if (sentAt == heardAt) return {sent.begin(), sent.end()};
  // In a unit of time in which a bit of the sender lasts `heardAt` and one of the receiver `sentAt`.
  const auto level = [&](std::int64_t time) { return LevelAt(sent, time / heardAt); };
  const std::int64_t end = static_cast<std::int64_t>(sent.size()) * wire::kBitsPerByte * heardAt;
  const auto next = [&](std::int64_t time) { return (time / heardAt + 1) * heardAt; };
  wire::Bytes heard;
  for (std::int64_t time = 0; time < end;) {
    if (level(time)) {
      time = next(time);
      continue;
    }
    unsigned byte = 0;
    for (int bit = 0; bit < 8; ++bit) {
      const std::int64_t middle = time + std::int64_t{sentAt} * (3 + 2 * bit) / 2;
      if (level(middle)) byte |= 1U << bit;
    }
    heard.push_back(static_cast<std::uint8_t>(byte));
    time += std::int64_t{sentAt} * 19 / 2;  // the middle of the stop bit
    while (time < end && !level(time)) time = next(time);
  }
  return heard;
}

Line::Time Line::TimeOf(std::size_t bytes, int speed) const {
  constexpr std::int64_t kSecond = 1'000'000;
  if (!setup.paced) return {};
  return Time(static_cast<std::int64_t>(bytes) * wire::kBitsPerByte * kSecond / speed);
}

wire::Bytes Line::Played(wire::ByteView bytes, int sentAt, int heardAt) {
  wire::Bytes heard = Heard(bytes, sentAt, heardAt);
  if (sentAt <= setup.poorAbove) return heard;
  for (std::uint8_t& byte : heard)
    if (++mCount % kPoorEvery == 0) byte = static_cast<std::uint8_t>(byte ^ 0x10U);
  return heard;
}

void Line::Send(wire::ByteView view, int farSpeed, Time now) {
  farSpeed = std::min(farSpeed, setup.roundsTo);
  wire::Bytes bytes(view.begin(), view.end());
  if (toMount) toMount(bytes);
  const Time begins = std::max(mComingFree, now);
  mComingFree = begins + TimeOf(bytes.size(), farSpeed);
  mComing.push_back({begins, mComingFree, Played(bytes, farSpeed, mEndpoint.Speed())});
}

/// An adapter that holds back looks at its clock, not at what came in.
Line::Time Line::HandedOn(Time arrives) const {
  if (setup.hold == Time{}) return arrives;
  return (arrives / setup.hold + 1) * setup.hold;
}

/// What the mount says at `now`. It arrives whole or, on a paced line, as it comes in.
void Line::Answer(wire::Bytes bytes, int speed, int farSpeed, Time now) {
  if (toLibrary) toLibrary(bytes);
  const std::size_t sent = bytes.size();
  if (sent == 0) return;
  const bool brief = sent < wire::kHeaderLength + wire::kCrcLength;
  const bool device = brief || bytes[2] != wire::kMountAddress;
  const wire::Bytes heard = Played(bytes, speed, farSpeed);
  const Time begin = std::max(mLeavingFree, now) + (device ? setup.handControl : Time{});
  mLeavingFree = begin + TimeOf(sent, speed);
  const std::size_t whole = setup.paced ? kFifo : std::max<std::size_t>(heard.size(), 1);
  const std::size_t most = setup.piece == 0 ? whole : std::min(setup.piece, whole);
  const Time pause = setup.paced ? Time{} : kBetweenPieces;
  Time last = begin;
  for (std::size_t at = 0; at < heard.size(); at += most) {
    const std::size_t count = std::min(most, heard.size() - at);
    const Time arrives = begin + setup.latency + delay + TimeOf((at + count) * sent / heard.size(), speed) +
                         pause * static_cast<std::int64_t>(at / most);
    const auto first = heard.begin() + static_cast<std::ptrdiff_t>(at);
    mLeaving.push_back({last, HandedOn(arrives), {first, first + static_cast<std::ptrdiff_t>(count)}});
    last = arrives;
  }
}

/// The next piece to the mount, and what the mount says to it.
void Line::Deliver(int farSpeed) {
  const Travelling piece = std::move(mComing.front());
  mComing.pop_front();
  const int speed = mEndpoint.Speed();
  Answer(mEndpoint.Receive(piece.bytes, piece.arrives), speed, farSpeed, piece.arrives);
}

/// Puts one byte into each direction: into what is under way at that moment, else by itself.
void Line::Stray() {
  const Time at = *mNextStray;
  for (Queue* const queue : {&mComing, &mLeaving}) {
    const auto byte = static_cast<std::uint8_t>(chance(256));
    const auto under = std::ranges::find_if(*queue, [at](const Travelling& t) { return t.arrives > at; });
    if (under == queue->end() || under->begins >= at) {
      queue->insert(under, {at, at, {byte}});
      continue;
    }
    const auto size = static_cast<std::int64_t>(under->bytes.size());
    under->bytes.insert(under->bytes.begin() + size * (at - under->begins) / (under->arrives - under->begins),
                        byte);
  }
  PlanStray(at);
}

void Line::PlanStray(Time now) {
  mNextStray.reset();
  if (strays.most == Time{}) return;
  mNextStray =
      now + strays.least + Time(chance(static_cast<std::uint32_t>((strays.most - strays.least).count()) + 1));
}

wire::Bytes Line::Take(int farSpeed, Time now) {
  farSpeed = std::min(farSpeed, setup.roundsTo);
  if (mNextStray.has_value() != (strays.most != Time{})) PlanStray(now);
  for (;;) {
    const bool comes = !mComing.empty() && mComing.front().arrives <= now;
    const bool stray = mNextStray && *mNextStray <= now;
    if (stray && (!comes || *mNextStray < mComing.front().arrives)) {
      Stray();
    } else if (comes) {
      Deliver(farSpeed);
    } else {
      break;
    }
  }
  const int speed = mEndpoint.Speed();
  if (const auto due = mEndpoint.Due(); due && *due <= now) Answer(mEndpoint.Tick(now), speed, farSpeed, now);
  wire::Bytes out;
  while (!mLeaving.empty() && mLeaving.front().arrives <= now) {
    out.insert(out.end(), mLeaving.front().bytes.begin(), mLeaving.front().bytes.end());
    mLeaving.pop_front();
    if (setup.piece != 0 && out.size() >= setup.piece) break;
  }
  return out;
}

std::optional<Line::Time> Line::Due() const {
  std::optional<Time> due = mEndpoint.Due();
  if (mNextStray) due = std::min(due.value_or(Time::max()), *mNextStray);
  for (const auto* queue : {&mComing, &mLeaving})
    if (!queue->empty()) due = std::min(due.value_or(Time::max()), queue->front().arrives);
  return due;
}

void Line::Clear() {
  mEndpoint.Clear();
  mComing.clear();
  mLeaving.clear();
}

}  // namespace tarnwick::mount
