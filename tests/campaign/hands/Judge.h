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
  bool live = false;                ///< Nothing runs and no box is up: what is on view may be used.
  bool running = false;             ///< A programming run or a verify.
  int page = 0;                     ///< 3 or 4, or 0 for one before.
  std::string focus{};              ///< Name of the control that has the keyboard, in the frame.
  std::string pointed{};            ///< Name of the control under the pointer, and of the button in a box.
  std::set<std::string> buttons{};  ///< Those of the page that can be pressed.
  bool frameActive = false;
  std::set<std::int32_t> chosen{};  ///< Addresses of the devices that are chosen on the last page.
  std::string package{};            ///< The package that is chosen, or that the last page goes by.
};

/// Knows nothing of the program's own flags on who asked for what.
class Judge {
 public:
  void Done(const Deed& deed, const View& view);
  /// Something happened to what is on view, so that what is held down no longer means it.
  void Turn() { ++mEpoch; }
  /// The program waits for its user, who sees `view`.
  void Idle(const View& view);
  /// The link is about to be called while the user sees `view`.
  void Calls(const View& view);
  /// The name of a change, as the link tells it.
  void Changed(const std::string& name, std::int32_t address, std::int32_t result);
  void WebOpens();
  void BoxOpens(const std::string& text, bool question, Milliseconds now);
  void BoxCloses(bool yes);
  void Fail(const std::string& what) { mFaults.push_back(what); }

  const std::vector<std::string>& Faults() const { return mFaults; }
  /// The devices that the user left unfinished, by an answer or behind an error that was told.
  const std::set<std::int32_t>& Left() const { return mLeft; }
  /// What was chosen when the step to the last page began.
  const std::string& Package() const { return mPackage; }
  int Runs() const { return mRuns; }
  int Boxes() const { return mBoxesAnswered; }

 private:
  struct Box {
    std::string text;
    Milliseconds from{};  ///< From when on an answer counts.
    bool answered = false;
  };

  /// A button that something went down on.
  struct Press {
    std::string on;
    int epoch = -1;
  };

  void KeyDown(const Deed& deed, const View& view);
  void LetGo(Press& press, const View& view, const std::string& under);

  int mEpoch = 0;
  std::map<int, Milliseconds> mLetGo;  ///< When each key was let go last.
  Press mSpace, mMouse;
  std::set<std::string> mAsked;  ///< Buttons that were pressed since the program waited last.
  bool mStopAsked = false;       ///< Cancel, Escape or the close box, likewise.
  bool mWentToCancel = false;
  int mCalledOn = -1;  ///< The page on which the link was called last, since the program waited.
  bool mRun = false, mGivenUp = false;  ///< The user said Yes to stopping the run.
  std::string mPackage;
  std::set<std::int32_t> mChosen, mEnded;
  std::set<std::int32_t> mOpen, mLeft;  ///< Begun and not ended; and of these, what the user knows to be so.
  std::vector<Box> mBoxes;
  std::vector<std::string> mFaults;
  int mRuns = 0, mBoxesAnswered = 0;
};

}  // namespace tarnwick::test
