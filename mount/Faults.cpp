#include "mount/Faults.h"

#include <utility>

namespace tarnwick::mount {

Faults::Faults(Mount& mount, Line& line, Say say)
    : mMount(mount),
      mLine(line),
      mSay(say ? std::move(say) : [](const std::string&) {}),
      mLies(mount, mDice, mSay) {
  mLine.toMount = [this](wire::Bytes& bytes) { Pass(bytes, kIn); };
  mLine.toLibrary = [this](wire::Bytes& bytes) { Pass(bytes, kOut); };
  mLine.chance = [this](std::uint32_t count) { return mDice.Below(count); };
  mMount.instead = [this](const wire::Frame& request) { return mLies.Handle(request); };
}

Faults::~Faults() {
  mLine.toMount = mLine.toLibrary = nullptr;
  mLine.strays = {};
  mLine.chance = [this](std::uint32_t count) { return mDice.Below(count); };
  mMount.instead = nullptr;
}

void Faults::Clear() {
  mNoise = {};
  mLate = 0;
  mLine.strays = {};
  mPlanned = Break::None;
  mLies.unstored = mLies.old = 0;
  mLies.stuck.clear();
  mLies.refusals.clear();
}

void Faults::Power() {
  mMount.PowerCycle();
  mLine.Clear();
  mAway = mAway == Break::Pull || Vanished() ? mAway : Break::None;
  mSay("power switched off and on");
}

void Faults::Plug() {
  mAway = mAway == Break::Pull || Vanished() ? Break::None : mAway;
  mSay("cable plugged in");
}

void Faults::Pass(wire::Bytes& bytes, Way way) {
  if (way == kOut && mAway == Break::Torn) {
    CutPower();
    bytes.clear();
  }
  if (bytes.empty()) return;
  if (Away()) {
    bytes.clear();
    if (way == kIn) InVain();
    return;
  }
  const std::uint64_t passed = mCount;
  mCount += bytes.size();
  if (mPlanned != Break::None && passed < mAt && mAt <= mCount) return BreakAt(bytes, way);
  Damage(bytes, way);
  mLine.delay = way == kOut && mDice.Hit(mLate) ? mLateBy : Line::Time{};
  if (mLine.delay != Line::Time{}) mSay("a late answer");
}

/// The byte of the break lies in `bytes`. Those before it have passed; with a torn block so has it, and
/// the power goes when the mount has taken it.
void Faults::BreakAt(wire::Bytes& bytes, Way way) {
  const auto kept = static_cast<std::size_t>(mAt - 1 - (mCount - bytes.size()));
  mAway = std::exchange(mPlanned, Break::None);
  if (mAway == Break::Torn && way == kIn) {
    bytes.resize(kept + 1);
    mLies.tear = true;
    return;
  }
  bytes.resize(kept);
  if (mAway != Break::Pull && !Vanished()) return CutPower();
  mSay((Vanished() ? "adapter gone at byte " : "cable pulled at byte ") + std::to_string(mAt));
}

void Faults::CutPower() {
  mLies.tear = false;
  mAway = Break::Cut;
  mMount.PowerCycle();
  mLine.Clear();
  mSay("power cut at byte " + std::to_string(mAt));
}

/// The far end has sent something that nobody hears.
void Faults::InVain() {
  if (mSendings == 0 || --mSendings > 0) return;
  mAway == Break::Pull || Vanished() ? Plug() : Power();
}

void Faults::Damage(wire::Bytes& bytes, Way way) {
  const Noise& noise = mNoise[way];
  wire::Bytes heard;
  heard.reserve(bytes.size() + 1);
  const auto hit = [&](double rate, const char* what) {
    if (!mDice.Hit(rate)) return false;
    mSay(std::string(what) + (way == kIn ? " on the way in" : " on the way out"));
    return true;
  };
  for (std::uint8_t byte : bytes) {
    if (hit(noise.drop, "a byte dropped")) continue;
    if (hit(noise.flip, "a bit flipped")) byte = static_cast<std::uint8_t>(byte ^ 1U << mDice.Below(8));
    heard.push_back(byte);
    if (hit(noise.twice, "a byte doubled")) heard.push_back(byte);
    if (hit(noise.insert, "a byte inserted")) heard.push_back(static_cast<std::uint8_t>(mDice.Below(256)));
  }
  bytes = std::move(heard);
}

}  // namespace tarnwick::mount
