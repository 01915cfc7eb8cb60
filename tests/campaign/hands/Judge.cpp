#include "Judge.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarnwick::test {
namespace {

using Kind = Deed::Kind;
using namespace std::chrono_literals;

/// Which button of a page a key presses with Alt.
constexpr std::array<std::pair<int, const char*>, 2> kKeys{
    {{Qt::Key_P, "cmdProgram"}, {Qt::Key_D, "cmdWebUpdate"}}};

constexpr Milliseconds kRepeatWithin = 60ms, kReading = 300ms;

}  // namespace

void Judge::Done(const Deed& deed, const View& view) {
  switch (deed.kind) {
    case Kind::KeyDown:
      KeyDown(deed, view);
      break;
    case Kind::KeyUp:
      if (deed.repeat) break;
      if (deed.window != nullptr) mLetGo[deed.key] = deed.at;  // Else nobody was told.
      if (deed.key == Qt::Key_Space) LetGo(mSpace, view, mSpace.on);
      break;
    case Kind::MouseDown:
      if (view.pointed == "cmdTerminate") mStopAsked = mWentToCancel = true;
      mMouse = {view.pointed, view.live ? mEpoch : -1};
      if (!mBoxes.empty() && deed.at >= mBoxes.back().from) mBoxes.back().answered = true;
      break;
    case Kind::MouseUp:
      LetGo(mMouse, view, view.pointed);
      break;
    case Kind::Close:
      mStopAsked = true;
      if (!mBoxes.empty() && deed.at >= mBoxes.back().from) mBoxes.back().answered = true;
      break;
    case Kind::Wheel:
    case Kind::Drop:
      break;
  }
}

void Judge::KeyDown(const Deed& deed, const View& view) {
  const auto letGo = mLetGo.find(deed.key);
  const bool fresh = !deed.repeat && (letGo == mLetGo.end() || deed.at - letGo->second > kRepeatWithin);
  if (deed.key == Qt::Key_Tab && mBoxes.empty()) mWentToCancel = true;
  if (!fresh) return;
  if (!mBoxes.empty()) {
    const bool moves = deed.key == Qt::Key_Tab || deed.key == Qt::Key_Up || deed.key == Qt::Key_Down;
    if (!moves && deed.at >= mBoxes.back().from) mBoxes.back().answered = true;
    return;
  }
  if (deed.key == Qt::Key_Escape) mStopAsked = true;
  if (deed.key == Qt::Key_Space && view.running && mWentToCancel) mStopAsked = true;
  if (!view.live || !view.frameActive) return;
  if (deed.key == Qt::Key_Space) mSpace = {view.focus, mEpoch};
  for (const auto& [key, button] : kKeys) {
    if (deed.key == key && deed.modifiers == Qt::AltModifier && view.buttons.contains(button))
      mAsked.insert(button);
  }
}

void Judge::LetGo(Press& press, const View& view, const std::string& under) {
  const bool clicks = press.epoch == mEpoch && view.live && under == press.on && view.buttons.contains(under);
  if (clicks) mAsked.insert(press.on);
  press = {};
}

void Judge::Idle(const View& view) {
  if (view.page == 4 && view.package != mPackage)
    Fail("went on with " + view.package + " in place of " + mPackage);
  mCalledOn = -1;
  mRun = mGivenUp = mStopAsked = mWentToCancel = false;
  mAsked.clear();
  mChosen.clear();
  mEnded.clear();
}

void Judge::Calls(const View& view) {
  Turn();
  if (std::exchange(mCalledOn, view.page) == view.page) return;
  if (view.page == 4) mChosen = view.chosen;
  if (view.page == 3) mPackage = view.package;
}

void Judge::Changed(const std::string& name, std::int32_t address, std::int32_t result) {
  const std::string what = name + " " + std::to_string(address);
  if (!mRun && !mAsked.contains("cmdProgram")) Fail(what + " though nobody began a run");
  if (!mChosen.contains(address)) Fail(what + ", which is not chosen");
  if (!mRun) ++mRuns;
  mRun = true;
  if (name == "start") {
    mOpen.insert(address);
    if (mGivenUp) Fail(what + " after the stop was confirmed");
    mEnded.erase(address);
  } else if (name == "end" && result == 1) {
    mOpen.erase(address);
    mLeft.erase(address);
    mEnded.insert(address);
  }
}

void Judge::WebOpens() {
  if (!mAsked.contains("cmdWebUpdate")) Fail("nobody asked for the web window");
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
  const bool givesUp = box.text.starts_with("Cancelling Programming") && yes;
  mGivenUp = mGivenUp || givesUp;
  if (givesUp || box.text.find("Error occurred") != std::string::npos) mLeft = mOpen;
}

}  // namespace tarnwick::test
