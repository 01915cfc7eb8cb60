#include "linklib/MountLink.h"

#include <algorithm>
#include <array>

namespace tarnwick::wire {
namespace {

using std::chrono::milliseconds;

/// Waits of the sendings of a request; between the two the mount is looked for.
constexpr std::array kFirstWaits = {milliseconds(150), milliseconds(150), milliseconds(250)};
constexpr std::array kLaterWaits = {milliseconds(250), milliseconds(400), milliseconds(400)};
/// While the mount is looked for at the speed of switching on. It takes longer than a mount at another
/// speed needs to go back there.
constexpr std::array kSearchWaits = {milliseconds(150), milliseconds(150), milliseconds(250),
                                     milliseconds(250), milliseconds(250)};
constexpr std::array kProbeWaits = {milliseconds(250)};

constexpr Duration kSearchLimit = milliseconds(1200);
constexpr Duration kFirstLimit = milliseconds(1500);
/// What a speed that does not work may cost; no faster one is tried when less time is left.
constexpr Duration kTrialLimit = milliseconds(1200);
/// Probes of a speed: so many, or as many as this time bears but for the least; good when at most one is
/// lost.
constexpr int kProbes = 8;
constexpr int kProbesAtLeast = 4;
constexpr Duration kProbeTime = milliseconds(400);
constexpr int kLossesAtMost = 1;

Opening CauseOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::Done:
      return Opening::Opened;
    case Outcome::Silent:
      return Opening::Silence;
    case Outcome::Noise:
      return Opening::Noise;
    case Outcome::Echo:
      return Opening::Echo;
    case Outcome::Gone:
      return Opening::LineFailed;
    case Outcome::Refused:
    case Outcome::Foreign:
      break;
  }
  return Opening::WrongAnswers;
}

}  // namespace

std::string_view CauseText(Opening result) {
  switch (result) {
    case Opening::Opened:
      return {};
    case Opening::CannotOpen:
      return "the port cannot be opened";
    case Opening::Silence:
      return "not one byte came back";
    case Opening::Noise:
      return "bytes came back that no mount sends";
    case Opening::Echo:
      return "only our own bytes came back";
    case Opening::WrongAnswers:
      return "answers came back, but not to our questions";
    case Opening::OtherProtocol:
      return "the mount speaks another version of the protocol";
    case Opening::LineFailed:
      return "the line went while the mount was looked for";
    case Opening::PoorLine:
      return "the mount answered, but at no speed well enough";
  }
  return {};
}

Frame MountLink::SpeedRequest(int speed) {
  return mSession.Request(kMountAddress, Command::Speed, {SpeedCode(speed)});
}

Opening MountLink::Open() {
  const Duration end = mSession.Now() + kOpenLimit;
  const Answer answer = FindMount(end);
  if (!answer.Done()) return CauseOf(answer.outcome);
  const Bytes& identity = answer.payload;
  if (!std::equal(std::begin(kMagic), std::end(kMagic), identity.begin())) return Opening::WrongAnswers;
  if (identity[2] != kProtocol) return Opening::OtherProtocol;
  mKind = static_cast<LinkKind>(identity[3]);
  mUpgradeSupported = (identity[4] & kUpgradeSupported) != 0;
  return Settle(kSpeeds[std::min<std::size_t>(identity[5], kSpeeds.size() - 1)], end);
}

/// Asks who is there, at the usual speed of switching on, then at that of the slowest mounts.
Answer MountLink::FindMount(Duration end) {
  Answer answer;
  for (const int speed : {kBaseSpeed, kSpeeds.front()}) {
    if (!mSession.Speed(speed)) continue;
    mHome = speed;
    const Frame request = mSession.Request(kMountAddress, Command::Identify);
    Answer here = mSession.Exchange(request, kSearchWaits, std::min(end, mSession.Now() + kSearchLimit));
    const bool more = here.Done() || speed == kBaseSpeed || answer.outcome == Outcome::Silent;
    if (more) answer = std::move(here);
    if (!answer.Lost()) break;
  }
  return answer;
}

/// Takes the fastest speed that works well, from `fastest` down; the slowest need not work well.
Opening MountLink::Settle(int fastest, Duration end) {
  for (std::size_t code = SpeedCode(fastest) + std::size_t{1}; code-- > 0;) {
    const int speed = kSpeeds[code];
    if (speed > mHome && end - mSession.Now() < kTrialLimit) continue;
    if (!ChangeTo(speed, end)) continue;
    const int good = Probe(end);
    if (good == kProbes || (good > 0 && code == 0)) return Opening::Opened;
  }
  return Opening::PoorLine;
}

/// Asks at the present speed, and where that fails at `mHome`, to which the mount then goes back for want
/// of requests that it understands.
bool MountLink::ChangeTo(int speed, Duration end) {
  bool agreed = mSession.Exchange(SpeedRequest(speed), kFirstWaits, end).Done();
  if (!agreed && mSession.Speed() != mHome && mSession.Speed(mHome))
    agreed = mSession.Exchange(SpeedRequest(speed), kSearchWaits, end).Done();
  return agreed && mSession.Speed(speed);
}

/// `kProbes` when the line is good at the present speed, else the number of probes that were answered.
int MountLink::Probe(Duration end) {
  const Duration enough = mSession.Now() + kProbeTime;
  int answered = 0;
  int lost = 0;
  while (answered + lost < kProbes && (answered + lost < kProbesAtLeast || mSession.Now() < enough)) {
    const bool done = mSession.Exchange(SpeedRequest(mSession.Speed()), kProbeWaits, end).Done();
    ++(done ? answered : lost);
    if (lost > kLossesAtMost) return answered;
  }
  return kProbes;
}

void MountLink::Lock() {
  mLockWanted = true;
  Insist(mSession.Request(kMountAddress, Command::Lock), mSession.Now() + kAskLimit);
}

Answer MountLink::Ask(std::uint8_t address, Command command, Bytes payload, Duration end) {
  const Frame request = mSession.Request(address, command, std::move(payload));
  Answer answer = Insist(request, end);
  if (!answer.Refused(Reason::NotLocked) || !mLockWanted) return answer;
  if (!Insist(mSession.Request(kMountAddress, Command::Lock), end).Done()) return answer;
  return Insist(request, end);
}

Answer MountLink::Try(std::uint8_t address, Command command, Bytes payload, Duration end) {
  const Frame request = mSession.Request(address, command, std::move(payload));
  return mSession.Exchange(request, kFirstWaits, std::min(end, mSession.Now() + kFirstLimit));
}

Answer MountLink::Insist(const Frame& request, Duration end) {
  Answer answer = mSession.Exchange(request, kFirstWaits, std::min(end, mSession.Now() + kFirstLimit));
  const bool again = answer.Refused(Reason::Busy) || (answer.Lost() && FindAgain(end));
  return again ? mSession.Exchange(request, kLaterWaits, end) : answer;
}

/// True when the mount answers, at the present speed or, after it went back, at one agreed on anew.
/// Leaves the speed as it was when the mount does not answer at all.
bool MountLink::FindAgain(Duration end) {
  const int agreed = mSession.Speed();
  if (agreed == mHome) return true;
  if (mSession.Exchange(SpeedRequest(agreed), kProbeWaits, end).Done()) return true;
  if (mSession.Speed(mHome) && mSession.Exchange(SpeedRequest(mHome), kSearchWaits, end).Done())
    return Settle(agreed, end - kTrialLimit) == Opening::Opened;
  mSession.Speed(agreed);
  return false;
}

}  // namespace tarnwick::wire
