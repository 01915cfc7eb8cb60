// What the hands asked for, read from what they did and what was on view then, held against what came of it.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Hands.h"

namespace tarnwick::test {

/// What a user sees at one moment.
struct View {
  bool live = false;       ///< Nothing runs and no box is up: what is on view may be used.
  bool running = false;    ///< A programming run or a verify.
  std::string focus{};     ///< Name of the control that has the keyboard, in the frame.
  std::string pointed{};   ///< Name of the control under the pointer, and of the button in a box.
  bool beginLive = false;  ///< "Begin Programming" is on view and enabled.
  bool frameActive = false;
  std::set<std::int32_t> chosen{};  ///< Addresses of the devices that are chosen on the last page.
};

/// Knows nothing of the program's own flags on who asked for what.
class Judge {
 public:
  void Done(const Deed& deed, const View& view);
  /// Something happened to what is on view, so that what is held down no longer means it.
  void Turn() { ++mEpoch; }
  /// The program waits for its user.
  void Idle();
  /// The name of a change, as the link tells it.
  void Changed(const std::string& name, std::int32_t address, std::int32_t result);
  void BoxOpens(const std::string& text, bool question, Milliseconds now);
  void BoxCloses(bool yes);
  void Fail(const std::string& what) { mFaults.push_back(what); }

  const std::vector<std::string>& Faults() const { return mFaults; }
  bool Stopped() const { return mStopped; }
  int Runs() const { return mRuns; }
  int Boxes() const { return mBoxesAnswered; }

 private:
  struct Box {
    std::string text;
    Milliseconds from{};  ///< From when on an answer counts.
    bool answered = false;
  };

  void KeyDown(const Deed& deed, const View& view);
  void MouseDown(const View& view);
  bool Begins(int begun) const { return begun == mEpoch; }

  int mEpoch = 0;
  std::map<int, Milliseconds> mLetGo;          ///< When each key was let go last.
  int mSpaceOnBegin = -1, mMouseOnBegin = -1;  ///< The epoch in which it went down there.
  bool mAsked = false;                         ///< Begin Programming was pressed, and nothing came of it yet.
  bool mStopAsked = false;  ///< Cancel, Escape or the close box, since the program waited last.
  bool mWentToCancel = false;
  bool mRun = false, mStopped = false;
  std::set<std::int32_t> mChosen, mEnded;
  std::vector<Box> mBoxes;
  std::vector<std::string> mFaults;
  int mRuns = 0, mBoxesAnswered = 0;
};

}  // namespace tarnwick::test
