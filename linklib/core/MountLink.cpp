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
constexpr std::array kCloseWaits = {milliseconds(150), milliseconds(150)};
/// The mount is told to leave a speed that does not work, in case it hears it.
constexpr std::array kUndoWaits = {milliseconds(100)};
/// How often a request is repeated while the mount may be at work on it, since it may not have come in.
constexpr milliseconds kSlowWait(200);

constexpr Duration kSearchLimit = milliseconds(1200);
constexpr Duration kFirstLimit = milliseconds(1500);
/// While the mount is asked once more how long it may take.
constexpr Duration kLearnLimit = milliseconds(2000);
/// A speed above the home speed is not tried when less time is left: at opening, where all below it may
/// have to be tried, and when the mount is found again, at a speed that worked.
constexpr Duration kTrialAtOpening = milliseconds(2500);
constexpr Duration kTrialAgain = milliseconds(1200);
/// What is left then for the request itself.
constexpr Duration kRequestTime = milliseconds(1200);
/// Probes of a speed: so many, or as many as this time bears but for the least; good when at most one is
/// lost.
constexpr int kProbes = 8;
constexpr int kProbesAtLeast = 4;
constexpr Duration kProbeTime = milliseconds(400);
constexpr int kLossesAtMost = 1;
/// At the home speed: what comes up on the line from time to time hits still more of what is sent slower.
constexpr int kLossesAtHome = 2;
/// Faster than this few adapters and cables are.
constexpr int kUsualFastest = 115200;

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
  const Opening taken = TakeIdentity(answer.payload);
  if (taken != Opening::Opened) return taken;
  if (mTellsTimes)
    LearnTimes(mSession.Exchange(mSession.Request(kMountAddress, Command::Times), kFirstWaits, end));
  return AgreeOnSpeed(mFastest, kTrialAtOpening, end);
}

/// A kind of link that is not known may need what is not known either: it is no mount to work with.
Opening MountLink::TakeIdentity(const Bytes& identity) {
  if (!std::equal(std::begin(kMagic), std::end(kMagic), identity.begin())) return Opening::WrongAnswers;
  if (identity[2] != kProtocol) return Opening::OtherProtocol;
  if (identity[3] > static_cast<std::uint8_t>(LinkKind::VirtualPort)) return Opening::WrongAnswers;
  mKind = static_cast<LinkKind>(identity[3]);
  mUpgradeSupported = (identity[4] & kUpgradeSupported) != 0;
  mTellsTimes = (identity[4] & kTellsTimes) != 0;
  mFastest = kSpeeds[std::min<std::size_t>(identity[5], kSpeeds.size() - 1)];
  if ((identity[4] & kTakesShort) != 0) mSession.SendShort();
  return Opening::Opened;
}

void MountLink::LearnTimes(const Answer& answer) {
  if (!answer.Done()) return;
  mTellsTimes = false;  // It need not be asked again.
  for (std::size_t i = 0; i < mTimes.size(); ++i)
    mTimes[i] = std::min(answer.payload[i], kMostTime) * kTimesUnit;
}

Duration MountLink::TimeOf(Command command) const {
  switch (command) {
    case Command::Start:
      return mTimes[0];
    case Command::End:
      return mTimes[1];
    case Command::Check:
      return mTimes[2];
    default:
      return {};
  }
}

void MountLink::Close() {
  if (mSession.Gone() || mSession.Speed() == mHome) return;
  const Duration end = mSession.Now() + kSearchLimit;
  mSession.Exchange(SpeedRequest(mHome), kCloseWaits, end);
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

/// Takes the fastest speed that works well, from `fastest` down; the slowest need not work well. A line
/// that does not bear one of the fast ones is spared the others, for want of time.
Opening MountLink::AgreeOnSpeed(int fastest, Duration trial, Duration end) {
  bool spared = false;
  for (std::size_t code = SpeedCode(fastest) + std::size_t{1}; code-- > 0;) {
    const int speed = kSpeeds[code];
    if (speed > mHome && end - mSession.Now() < trial) continue;
    if (speed > kUsualFastest && spared) continue;
    if (!ChangeTo(speed, end)) continue;
    spared = true;
    const int good = Probe(end);
    if (good == kProbes || (good > 0 && code == 0)) return Opening::Opened;
    mSession.Exchange(SpeedRequest(mHome), kUndoWaits, end);
  }
  return Opening::PoorLine;
}

/// Agrees on a speed at the mount's home speed. A mount that is elsewhere goes back there for want of
/// requests that it understands. What this end cannot take, the mount is not asked for.
bool MountLink::ChangeTo(int speed, Duration end) {
  if (!mSession.Speed(speed) || !mSession.Speed(mHome)) return false;
  return mSession.Exchange(SpeedRequest(speed), kSearchWaits, end).Done() && mSession.Speed(speed);
}

/// `kProbes` when the line is good at the present speed, else the number of probes that were answered.
int MountLink::Probe(Duration end) {
  const Duration enough = mSession.Now() + kProbeTime;
  const bool home = mSession.Speed() == mHome;
  const int bearable = home ? kLossesAtHome : kLossesAtMost;
  const int least = home ? kProbes : kProbesAtLeast;
  int answered = 0;
  int lost = 0;
  while (answered + lost < kProbes && (answered + lost < least || mSession.Now() < enough)) {
    const bool done = mSession.Exchange(SpeedRequest(mSession.Speed()), kProbeWaits, end).Done();
    ++(done ? answered : lost);
    if (lost > bearable) return answered;
  }
  return kProbes;
}

void MountLink::Lock() {
  mLockWanted = true;
  AskRepeatedly(mSession.Request(kMountAddress, Command::Lock), mSession.Now() + kAskLimit);
}

bool MountLink::TakesLong(Command command) {
  return command == Command::Start || command == Command::End || command == Command::Check;
}

Answer MountLink::Ask(std::uint8_t address, Command command, Bytes payload, Duration asked) {
  // What got lost when the port was opened is asked for once more where it matters.
  if (mTellsTimes && TakesLong(command)) {
    LearnTimes(AskRepeatedly(mSession.Request(kMountAddress, Command::Times), asked + kLearnLimit));
  }
  const Duration end = asked + std::max(kAskLimit, TimeOf(command) + kSlowMargin);
  const Frame request = mSession.Request(address, command, std::move(payload));
  Answer answer = AskRepeatedly(request, end);
  if (!answer.Refused(Reason::NotLocked) || !mLockWanted) return answer;
  if (!AskRepeatedly(mSession.Request(kMountAddress, Command::Lock), end).Done()) return answer;
  return AskRepeatedly(request, end);
}

Answer MountLink::Try(std::uint8_t address, Command command, Bytes payload, Duration asked) {
  return First(mSession.Request(address, command, std::move(payload)), asked + kAskLimit);
}

/// The first sendings of a request: as many as the time bears for which the mount may be at work on it.
Answer MountLink::First(const Frame& request, Duration end) {
  const Duration slow = TimeOf(request.command);
  if (slow == Duration::zero())
    return mSession.Exchange(request, kFirstWaits, std::min(end, mSession.Now() + kFirstLimit));
  const Duration limit = std::min(end, mSession.Now() + slow + kSlowWait);
  const std::vector<milliseconds> waits(static_cast<std::size_t>(slow / kSlowWait + 1), kSlowWait);
  return mSession.Exchange(request, waits, limit);
}

/// A line on which bytes come that are no answer is tried until `end`; one that is silent, as before a
/// device that is not there, only once more.
Answer MountLink::AskRepeatedly(const Frame& request, Duration end) {
  Answer answer = First(request, end);
  bool more = true;
  while (more && mSession.Now() < end && (answer.Refused(Reason::Busy) || answer.Lost())) {
    if (answer.Lost() && !FindAgain(end)) break;
    answer = mSession.Exchange(request, kLaterWaits, end);
    more = answer.Lost() && answer.outcome != Outcome::Silent;
  }
  return answer;
}

/// True when the mount answers, at the present speed or, after it went back, at one agreed on anew.
/// Leaves the speed as it was when the mount does not answer at all.
bool MountLink::FindAgain(Duration end) {
  const int agreed = mSession.Speed();
  if (agreed == mHome) return true;
  if (mSession.Exchange(SpeedRequest(agreed), kProbeWaits, end).Done()) return true;
  if (mSession.Gone()) return false;
  if (mSession.Speed(mHome) && mSession.Exchange(SpeedRequest(mHome), kSearchWaits, end).Done())
    return AgreeOnSpeed(agreed, kTrialAgain, end - kRequestTime) == Opening::Opened;
  mSession.Speed(agreed);
  return false;
}

}  // namespace tarnwick::wire
