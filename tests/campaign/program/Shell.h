// One owner without a window: gives commands to tarnwick-flash, reads what they write and how they end, does
// what that says, and nothing else.
#pragma once

#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "World.h"
#include "flash/Commands.h"
#include "support/ClockDouble.h"
#include "support/CoreLink.h"

namespace tarnwick::campaign {

/// All commands of one owner; each begins as a process of its own would, knowing nothing.
class Shell final {
 public:
  Shell(const Case& played, IWorld& world, const std::filesystem::path& folder);
  ~Shell();
  Shell(const Shell&) = delete;
  Shell& operator=(const Shell&) = delete;

  Report Play();

 private:
  /// Where nobody sits, somebody comes by while the program waits.
  struct Clock final : test::ClockDouble {
    void Sleep(std::chrono::milliseconds) override { comesBy(); }
    std::function<void()> comesBy;
  };

  flash::Exit Give(flash::Command command);
  void Program();
  void ReadOutcomes(flash::Exit exit);
  void Follow(flash::Exit exit);
  void RefuseOrTryAnother();
  void ChooseAnother();
  void GiveUp(const std::string& why);
  bool OnCall(const std::string& call);
  void Stop();
  void BeginAgain();
  bool Type(std::string& line);
  bool Answer(std::string_view question);
  bool IsCertain();
  std::string Unread();

  const Case mCase;
  IWorld& mWorld;
  const std::filesystem::path mFolder;
  Clock mClock;
  std::FILE* mStream = nullptr;  ///< Where the command that runs writes to.
  char* mBytes = nullptr;
  std::size_t mSize = 0, mRead = 0;
  std::string mSaid;  ///< All that the last command wrote.
  std::string mPackage;
  Variant mChosen = 0;            ///< What it was when the command was given.
  std::set<std::string> mMotors;  ///< Those that the program named.
  std::map<std::string, Variant> mWritten;
  std::string mMotor;        ///< Empty for all.
  std::int32_t mNamed = 0;   ///< Revision that the owner read somewhere.
  std::string_view mAdvice;  ///< Of the last message.
  std::map<std::string, int> mTried;
  bool mOneByOne = false, mDone = false;
  bool mStopped = false;    ///< The command was told to stop.
  bool mHesitates = false;  ///< The first question about a cancel is answered with No.
  Number mCalls = 0, mBlocksAfterStop = 0, mSleeps = 0;
  Report mReport;
};

}  // namespace tarnwick::campaign
