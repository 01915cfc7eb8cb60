#include "mount/Mount.h"

namespace tarnwick::mount {
namespace {

using wire::Command;

/// A hand control passes these on only while it is locked, so that nobody presses its keys meanwhile.
bool NeedsLock(Command command) {
  switch (command) {
    case Command::Enter:
    case Command::Start:
    case Command::End:
    case Command::Check:
    case Command::Write1:
    case Command::Write2:
    case Command::Write4:
      return true;
    default:
      return false;
  }
}

}  // namespace

void Mount::Put(std::uint8_t address, const DeviceSetup& setup) {
  mDevices.insert_or_assign(address, Device(setup));
}

void Mount::Link(const LinkSetup& link) {
  mLink = link;
  mLocked = false;
}

void Mount::PowerCycle() {
  for (auto& [address, device] : mDevices) device.PowerCycle();
  mLocked = false;
  mLastRequest.reset();
  ToHomeSpeed();
}

std::optional<wire::Frame> Mount::Handle(const wire::Frame& request) {
  if (request.kind != wire::Kind::Request) return std::nullopt;
  if (IsRepeated(request)) {
    wire::Frame again = mLastAnswer;
    again.brief = request.brief;
    return again;
  }
  std::optional<Reply> reply = Answer(request);
  if (!reply) return std::nullopt;
  wire::Frame answer = request;
  answer.kind = reply->kind;
  answer.payload = std::move(reply->payload);
  if (answer.kind == wire::Kind::Done && answer.address != wire::kMountAddress) {
    mLastRequest = request;
    mLastAnswer = answer;
  }
  return answer;
}

/// In the short form or not, the same block is the same request.
bool Mount::IsRepeated(const wire::Frame& request) const {
  if (!mLastRequest) return false;
  wire::Frame last = *mLastRequest;
  last.brief = request.brief;
  return last == request;
}

std::optional<Reply> Mount::Answer(const wire::Frame& request) {
  if (request.address == wire::kMountAddress) return AnswerItself(request);
  const auto device = mDevices.find(request.address);
  if (device == mDevices.end() || device->second.State() == RunState::Silent) return std::nullopt;
  const bool throughHandControl = mLink.kind != wire::LinkKind::Direct;
  if (throughHandControl && !mLocked && NeedsLock(request.command))
    return Reply::Refused(wire::Reason::NotLocked);
  return device->second.Handle(request.command, request.payload);
}

Reply Mount::AnswerItself(const wire::Frame& request) {
  switch (request.command) {
    case Command::Identify:
      return Identify();
    case Command::Speed:
      return ChangeSpeed(request.payload[0]);
    case Command::Times:
      return mLink.first ? Reply::Refused(wire::Reason::WrongState) : TellTimes();
    case Command::Lock:
      if (mLink.kind == wire::LinkKind::Direct) break;
      mLocked = true;
      return Reply::Done();
    default:
      break;
  }
  return Reply::Refused(wire::Reason::WrongState);
}

/// Begins a new session: what the last one asked for is no repetition of what this one asks.
Reply Mount::Identify() {
  mLastRequest.reset();
  const unsigned knows = mLink.first ? 0U : wire::kTakesShort | unsigned{wire::kTellsTimes};
  const unsigned flags =
      (mLink.upgradeSupported ? wire::kUpgradeSupported : 0U) | (mLocked ? wire::kLocked : 0U) | knows;
  return Reply::Done({wire::kMagic[0], wire::kMagic[1], wire::kProtocol,
                      static_cast<std::uint8_t>(mLink.kind), static_cast<std::uint8_t>(flags),
                      wire::SpeedCode(mLink.fastest)});
}

/// Rounded up, since a time that is too short is of no use.
Reply Mount::TellTimes() const {
  wire::Bytes times;
  for (const auto time : {mLink.busy.start, mLink.busy.end, mLink.busy.check})
    times.push_back(static_cast<std::uint8_t>((time + wire::kTimesUnit - std::chrono::milliseconds(1)) /
                                              wire::kTimesUnit));
  return Reply::Done(std::move(times));
}

std::chrono::milliseconds Mount::TimeOf(Command command) const {
  switch (command) {
    case Command::Start:
      return mLink.busy.start;
    case Command::End:
      return mLink.busy.end;
    case Command::Check:
      return mLink.busy.check;
    default:
      return {};
  }
}

Reply Mount::ChangeSpeed(std::size_t code) {
  if (code > wire::SpeedCode(mLink.fastest)) return Reply::Refused(wire::Reason::OutOfRange);
  mSpeed = wire::kSpeeds[code];
  return Reply::Done({static_cast<std::uint8_t>(code)});
}

}  // namespace tarnwick::mount
