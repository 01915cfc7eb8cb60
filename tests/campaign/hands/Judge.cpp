#include "Judge.h"

#include <algorithm>

namespace tarnwick::test {
namespace {

using Kind = Deed::Kind;
using namespace std::chrono_literals;

constexpr Milliseconds kRepeatWithin = 60ms, kReading = 300ms;

}  // namespace

void Judge::Done(const Deed& deed, const View& view) {
  if (view.live && view.beginLive) mChosen = view.chosen;
  const bool letGo = mEpoch == mSpaceOnBegin || mEpoch == mMouseOnBegin;
  switch (deed.kind) {
    case Kind::KeyDown:
      KeyDown(deed, view);
      break;
    case Kind::KeyUp:
      if (!deed.repeat) mLetGo[deed.key] = deed.at;
      if (letGo && deed.key == Qt::Key_Space && mSpaceOnBegin == mEpoch && view.live) mAsked = true;
      if (deed.key == Qt::Key_Space) mSpaceOnBegin = -1;
      break;
    case Kind::MouseDown:
      MouseDown(view);
      if (!mBoxes.empty() && deed.at >= mBoxes.back().from) mBoxes.back().answered = true;
      break;
    case Kind::MouseUp:
      if (letGo && mMouseOnBegin == mEpoch && view.live && view.pointed == "cmdProgram") mAsked = true;
      mMouseOnBegin = -1;
      break;
    case Kind::Close:
      mStopAsked = true;
      if (!mBoxes.empty() && deed.at >= mBoxes.back().from) mBoxes.back().answered = true;
      break;
    case Kind::Wheel:
      break;
  }
}

void Judge::KeyDown(const Deed& deed, const View& view) {
  const auto letGo = mLetGo.find(deed.key);
  const bool fresh = !deed.repeat && (letGo == mLetGo.end() || deed.at - letGo->second > kRepeatWithin);
  if (!fresh) return;
  if (!mBoxes.empty()) {
    const bool moves = deed.key == Qt::Key_Tab || deed.key == Qt::Key_Up || deed.key == Qt::Key_Down;
    if (!moves && deed.at >= mBoxes.back().from) mBoxes.back().answered = true;
    return;
  }
  if (deed.key == Qt::Key_Escape) mStopAsked = true;
  if (deed.key == Qt::Key_Tab) mWentToCancel = true;
  if (deed.key == Qt::Key_Space && view.running && mWentToCancel) mStopAsked = true;
  if (!view.live || !view.beginLive || !view.frameActive) return;
  if (deed.key == Qt::Key_P && deed.modifiers == Qt::AltModifier) mAsked = true;
  if (deed.key == Qt::Key_Space && view.focus == "cmdProgram") mSpaceOnBegin = mEpoch;
}

void Judge::MouseDown(const View& view) {
  if (view.pointed == "cmdTerminate") mStopAsked = mWentToCancel = true;
  mMouseOnBegin = view.live && view.beginLive && view.pointed == "cmdProgram" ? mEpoch : -1;
}

void Judge::Idle() {
  mAsked = mRun = mStopAsked = mWentToCancel = false;
  mEnded.clear();
}

void Judge::Changed(const std::string& name, std::int32_t address, std::int32_t result) {
  if (!mRun && !mAsked) Fail(name + " " + std::to_string(address) + " though nobody began a run");
  if (!mRun) ++mRuns;
  mRun = true;
  if (name == "end" && result == 1) mEnded.insert(address);
  if (name == "start") mEnded.erase(address);
}

void Judge::BoxOpens(const std::string& text, bool question, Milliseconds now) {
  Turn();
  mBoxes.push_back({text, now + (question ? kReading : 0ms)});
  const bool stops = text.starts_with("Cancelling Programming") || text == "Verify cancelled by user";
  if (stops && !mStopAsked) Fail("stopped though nobody asked: " + text);
  if (!text.starts_with("Programming Complete")) return;
  if (mChosen.empty() || !std::includes(mEnded.begin(), mEnded.end(), mChosen.begin(), mChosen.end())) {
    Fail("complete, though not each chosen device was ended");
  }
}

void Judge::BoxCloses(bool yes) {
  Turn();
  const Box box = mBoxes.back();
  mBoxes.pop_back();
  ++mBoxesAnswered;
  if (!box.answered) Fail("no fresh key or click answered: " + box.text);
  const bool stops = box.text.starts_with("Cancelling Programming")
                         ? yes
                         : box.text.find("Error occurred") != std::string::npos;
  mStopped = mStopped || stops;
}

}  // namespace tarnwick::test
