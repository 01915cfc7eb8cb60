// One owner's way through the whole program: a script that reads what is on the screen, looks up the advice
// for it, does what that says, and nothing else.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "Mounted.h"
#include "firmware/QalPackage.h"
#include "platform/ui.h"
#include "programmer/Progress.h"

namespace tarnwick::campaign {

using Image = std::vector<std::int32_t>;

/// What strikes in the midst of a run.
enum class Fault { None, Cut, Pull, HangUp, Cancel, Kill, Deleted, Replaced, FailedCall };

/// One case: the mount, the package, the settings, and what goes wrong when.
struct Case {
  std::int32_t model = 5;
  std::int32_t revision = 2;
  std::array<bool, 2> oldLoader{true, true};
  std::int32_t claims = -1;  ///< Revision that an old boot loader tells; -1 for the true one.
  bool firstVersion3 = false;
  bool handControl = false;
  int devices = 1;
  std::string list;  ///< Revisions that the package names.
  bool modelOverride = false, typeOverride = false;
  int blockSize = 0;  ///< What is answered where the settings ask for it; 0 where they do not.
  Fault fault = Fault::None;
  std::string call;         ///< Which kind of call fails.
  std::uint32_t count = 1;  ///< The fault strikes at so many: blocks, events, calls.
  std::uint32_t byte = 1;   ///< Of that block's exchange.
  bool between = false;     ///< A cancel comes behind the end of the first image.
  bool again = false;       ///< The recovery is cut once as well.
  std::uint32_t againAt = 1;
  bool tell = false;  ///< What the owner reads and does is told on standard output.
};

enum class End {
  Refused,  ///< Before the first touch, memory unchanged.
  Done,     ///< The mount's memory equals the package, and the boot loader is right.
  Bad,
};

struct Result {
  End end = End::Bad;
  std::string wrong;    ///< What must never be, told.
  bool struck = false;  ///< The fault came.
  int visits = 0;       ///< Runs that the owner began.
};

class Visit final : public ui::IUserInterface, public IProgress {
 public:
  explicit Visit(const Case& played);
  ~Visit() override;
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

  Result Play();

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override;
  std::string InputBox(std::string_view, std::string_view, std::string_view) override;
  void PumpEvents() override;
  void PumpPainting() override {}
  void Beep() override {}
  void Label(const std::string& text) override { mLabel = text; }
  void Bar(double) override {}
  void Caption(const std::string&) override {}
  void Rest() override {}
  void Busy(bool) override {}
  void Status() override;

 private:
  /// Where in the program the owner is.
  enum class Page { Start, Port, Package, Run, Left };

  void StartProgram();
  void NextOnPort();
  void NextOnPackage();
  void BackToPackage();
  void Begin();
  void ReadOutcome(std::int32_t row, const std::string& line);
  void Follow(std::string_view advice);
  void ChooseNamed();
  bool Strike(const std::string& call);
  void StrikeBlock();
  void Judge();
  void GiveUp(const std::string& why);
  void Tell(std::string_view what) const;

  const Case mCase;
  Rig mRig;
  Page mPage = Page::Start;
  std::string mPackage = "main";    ///< Chosen on the page with the packages.
  std::vector<std::int32_t> mRows;  ///< Chosen on the last page; all when empty.
  std::int32_t mRow = 1;            ///< That the advice is about.
  std::int32_t mNamed = 0;          ///< Revision that the owner read somewhere.
  std::string mLabel;               ///< Of the progress.
  bool mBetween = false;            ///< The cancel came behind the end of an image.
  std::string_view mAdvice;         ///< Of the last message.
  std::map<std::string, int> mTried;
  QalIdentity mJudged;
  Image mChosen;
  std::map<std::int32_t, Image> mWanted;  ///< By row: what was written last, as it was chosen.
  std::uint32_t mBlocks = 0, mPumps = 0, mCalls = 0, mKinds = 0, mBlocksAfterCancel = 0;
  bool mStruck = false, mCancelled = false, mReplaced = false, mGivenUp = false;
  std::string mBefore;  ///< The mount's memory before anything.
  Result mResult;
};

}  // namespace tarnwick::campaign
