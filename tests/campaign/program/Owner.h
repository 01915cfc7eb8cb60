// One owner's way through the program: a script that reads what is on the screen, looks up the advice for it,
// does what that says, and nothing else.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "Screen.h"
#include "World.h"
#include "platform/ui.h"
#include "support/CoreLink.h"

namespace tarnwick::campaign {

/// One start of the program, to its end. What the owner knows is what was on the screen since then.
class Owner final : ui::IUserInterface {
 public:
  Owner(const Case& played, IWorld& world, const std::filesystem::path& folder);
  ~Owner() override;
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;

  Report Play();

 private:
  void NextOnPort();
  void NextOnPackage();
  void BackTo(int page);
  void Begin();
  void ReadOutcomes(const std::vector<std::string>& lines);
  void CheckTold(const std::vector<std::string>& lines);
  void ReadOutcome(const std::string& motor, const std::string& line);
  void Follow(std::string_view advice);
  void ChooseAnother();
  void RefuseOrTryAnother(const std::string& advised);
  void GiveUp(const std::string& why);
  bool OnCall(const std::string& call);
  void PressCancel();
  ui::Answer Answered(std::string_view text);
  void Tell(std::string_view what) const;

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override;
  std::string InputBox(std::string_view, std::string_view, std::string_view) override;
  void PumpEvents() override;
  void PumpPainting() override;
  void Beep() override {}

  const Case mCase;
  IWorld& mWorld;
  const std::filesystem::path mFolder;
  test::CoreLink mLink{mWorld, mWorld};
  Screen mScreen{mFolder};
  std::string mPackage;      ///< Chosen on the page with the packages.
  Variant mChosen = 0;       ///< What it was when it was chosen.
  std::string mMotor;        ///< Chosen on the last page; empty for all.
  std::int32_t mNamed = 0;   ///< Revision that the owner read somewhere.
  std::string_view mAdvice;  ///< Of the last message.
  std::map<std::string, int> mTried;
  std::map<std::string, Variant> mWritten;  ///< By motor.
  bool mDone = false;                       ///< The owner is through, or knows no way on.
  bool mRunning = false;                    ///< Begin Programming was pressed, and the page is not back yet.
  bool mStopped = false;                    ///< A message of this run told that it stops.
  bool mRenewing = false;                   ///< The last block was one of a boot package.
  Number mSent = 0;                         ///< So many blocks were sent in this run.
  bool mPumping = false;
  bool mCancelled = false;  ///< In this run.
  bool mBetween = false;    ///< The cancel came behind the end of an image.
  bool mHesitates = false;  ///< The first question about a cancel is answered with No.
  Number mPumps = 0, mBlocksAfterCancel = 0;
  Report mReport;
};

/// Plays the case by the face of the program that it was drawn for.
Report PlayFace(const Case& played, IWorld& world, const std::filesystem::path& folder);

}  // namespace tarnwick::campaign
