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
  if (mLastRequest == request) return mLastAnswer;
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
  const unsigned flags =
      (mLink.upgradeSupported ? wire::kUpgradeSupported : 0U) | (mLocked ? wire::kLocked : 0U);
  return Reply::Done({wire::kMagic[0], wire::kMagic[1], wire::kProtocol,
                      static_cast<std::uint8_t>(mLink.kind), static_cast<std::uint8_t>(flags),
                      wire::SpeedCode(mLink.fastest)});
}

Reply Mount::ChangeSpeed(std::size_t code) {
  if (code > wire::SpeedCode(mLink.fastest)) return Reply::Refused(wire::Reason::OutOfRange);
  mSpeed = wire::kSpeeds[code];
  return Reply::Done({static_cast<std::uint8_t>(code)});
}

}  // namespace tarnwick::mount
