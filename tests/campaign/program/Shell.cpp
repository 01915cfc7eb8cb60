#include "Shell.h"

#include <csignal>
#include <iostream>

#include "Reading.h"
#include "platform/program.h"
#include "platform/signals.h"
#include "programmer/Advice.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"

namespace tarnwick::campaign {
namespace {

using flash::Command;
using flash::Exit;

constexpr int kMostCommands = 60;
constexpr Number kPauseSeconds = 10;

/// The advice of the message that was shown last.
std::string_view LastAdvice(std::string_view said) {
  std::string_view last;
  std::size_t at = 0;
  for (const auto& [message, told] : advice::OfMessages())
    if (const std::size_t found = said.rfind(message); found != std::string_view::npos && found >= at)
      last = told, at = found;
  return last;
}

}  // namespace

Shell::Shell(const Case& played, IWorld& world, const std::filesystem::path& folder)
    : mCase(played),
      mWorld(world),
      mFolder(folder),
      mPackage(played.first),
      mHesitates(played.byte % 2 == 0) {
  signals::Note();
  mClock.comesBy = [this] {
    if (mSleeps++ % kPauseSeconds == 0) BeginAgain();
  };
}

Shell::~Shell() {
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
  std::filesystem::current_path("/");
}

Report Shell::Play() {
  Give(Command::Status);
  if (Says(mSaid, "begun and not ended")) mPackage = PackageNamed(mSaid);
  for (int i = 0; i < kMostCommands && !mDone; ++i) Program();
  if (!mDone) GiveUp("no end");
  for (const auto& [motor, variant] : mWritten) mReport.written[kMotors.at(motor)] = variant;
  return mReport;
}

/// What the command has written since the owner looked last.
std::string Shell::Unread() {
  std::fflush(mStream);
  const std::string text(mBytes + mRead, mSize - mRead);
  mRead = mSize;
  mSaid += text;
  if (mCase.tell) std::cout << text << std::flush;
  return text;
}

Exit Shell::Give(Command command) {
  flash::Arguments arguments;
  arguments.command = command;
  if (command == Command::Program) arguments.operand = mPackage;
  if (command == Command::Program && !mMotor.empty()) arguments.address = kMotors.at(mMotor);
  if (mCase.face == Face::Script) arguments.yes = {"boot-loader", "restart", "again"};
  if (mCase.face == Face::Script && IsCertain()) arguments.yes.insert("model");
  test::ResetGlobals();
  program::Set({mFolder, "Tarnwick", 2, 2, 4});
  signals::Take();
  test::CoreLink link(mWorld, mWorld);
  link.before = [this](const std::string& call) { return !call.empty() && OnCall(call); };
  link.after = [this](const std::string& call, auto, auto) {
    if (call == "end" && mCase.between) Stop();
  };
  mSaid.clear();
  mRead = 0;
  mStream = ::open_memstream(&mBytes, &mSize);
  flash::Output output(flash::Output::Form::Text, mStream, mStream);
  flash::Typing person;
  if (mCase.face == Face::Terminal) person = [this](std::string& line) { return Type(line); };
  flash::Console user(output, arguments.yes, person);
  const Exit exit = flash::Perform({arguments, output, user});
  output.End(exit);
  Unread();
  std::fclose(mStream);
  std::free(mBytes);
  if (Says(mSaid, "begun and not ended")) ++mReport.notes;
  mAdvice = LastAdvice(mSaid);
  return exit;
}

void Shell::Program() {
  const std::filesystem::path path = mFolder / "MotorControllers" / (mPackage + ".qal");
  if (!std::filesystem::exists(path)) test::WriteFile(path, PackageOf(mCase, mPackage));  // Fetched.
  const bool replaced = mPackage == "main" && test::ReadFile(path) == PackageOf(mCase, "main", true);
  mChosen = replaced ? kReplaced : VariantOf(mPackage);
  mTried["restart"] = mTried["again"] = 0;
  mStopped = false;
  mBlocksAfterStop = 0;
  ++mReport.runs;
  mWorld.Begins();
  const bool untouched = mWorld.Untouched();
  const Exit exit = Give(Command::Program);
  if (mCase.tell) std::cout << "-- " << mPackage << " " << mMotor << " ended " << int(exit) << std::endl;
  if (mBlocksAfterStop > (mCase.between ? 0 : 1)) mReport.wrong = "went on after a stop";
  if (exit == Exit::Refused && untouched && !mWorld.Untouched()) mReport.wrong = "refused, and changed";
  ReadOutcomes(exit);
  if (!mDone) Follow(exit);
}

void Shell::ReadOutcomes(Exit exit) {
  bool stopped = false;
  for (const std::string& line : LinesOf(mSaid)) {
    const std::string motor = line.substr(0, line.find(" Motor") + 6);
    if (!kMotors.contains(motor)) continue;
    mMotors.insert(motor);
    if (const std::int32_t named = NumberBehind(line.substr(0, line.find("): ")), "HwRev ")) mNamed = named;
    stopped = Says(line, "stopped at");
    if (stopped) mWritten.erase(motor);
    const bool once = Says(line, advice::kCommandOnceMore);
    if (once || Says(line, advice::kCommandCyclePower)) mWorld.Power();
    if (Says(line, "5.12 written") && !(once && ++mTried["once more"] < 3)) mWritten[motor] = mChosen;
  }
  if (stopped && !std::filesystem::exists(mFolder / "Tarnwick.unfinished"))
    mReport.wrong = "stopped, and no note of it";
  if (exit == Exit::Done && (mWritten.empty() || (!mMotor.empty() && !mWritten.contains(mMotor))))
    mReport.wrong = "done, and nothing is written";
  mMotor.clear();
  for (const std::string& motor : mMotors)
    if (!mWritten.contains(motor) && (mOneByOne || !mWritten.empty())) mMotor = motor;
  if (mWritten.empty() || mWritten.size() < mMotors.size()) return;
  mWorld.CheckPowerAndCable();
  mWorld.Power();
  mDone = true;
}

/// Does what the advice says, of the outcome or of the message.
void Shell::Follow(Exit exit) {
  mWorld.CheckPowerAndCable();
  if (exit == Exit::LineFailed) {
    if (++mTried["line"] > 9) GiveUp("the line");
  } else if (exit != Exit::Refused && exit != Exit::Stopped && exit != Exit::Done) {
    mReport.wrong = "ended with " + std::to_string(static_cast<int>(exit));
  } else if (mAdvice == advice::kChooseDevice) {
    mOneByOne = true;
    mMotor = *mMotors.begin();
  } else if (mAdvice == advice::kNameRevision || mAdvice == advice::kOtherPackage) {
    if (++mTried[std::string(mAdvice)] % 2 == 0) RefuseOrTryAnother();
  } else if (exit == Exit::Refused && mAdvice == advice::kSamePackage) {
    RefuseOrTryAnother();
  } else if (exit == Exit::Stopped && !Says(mSaid, advice::kCommandAgain) &&
             !Says(mSaid, advice::kCommandOnceMore) && !Says(mSaid, "not touched")) {
    GiveUp("nothing is advised");
  }
}

/// This package will not do: the one for this mount, then one that names a revision alone. Where neither
/// will, the mount is as it was.
void Shell::RefuseOrTryAnother() {
  const bool first = mPackage == "foreign" || mPackage == "others";
  const bool named = mAdvice == advice::kNameRevision || !mWorld.Untouched();
  const int tried = mTried[std::string(mAdvice)];
  if (!first && (!named || mAdvice == advice::kSamePackage || tried > 5)) return GiveUp("refused");
  first ? void(mPackage = "main") : ChooseAnother();
}

void Shell::ChooseAnother() {
  Give(Command::Status);
  std::int32_t known = 0;
  for (const std::string& motor : mMotors.empty() ? std::set<std::string>{"AZM(RA) Motor"} : mMotors)
    if (known == 0) known = std::atoi(Reported(LinesOf(mSaid), motor, "HwRev").c_str());
  if (known == 0) known = mNamed;
  if (known == 0) return GiveUp("no revision is known");
  mPackage = "only" + std::to_string(known);
}

void Shell::GiveUp(const std::string& why) {
  mDone = true;
  mReport.gaveUp = why;
}

/// Of another package than its own the owner is not certain.
bool Shell::IsCertain() {
  return (mPackage != "foreign" && mPackage != "others") || !mWorld.Untouched();
}

bool Shell::OnCall(const std::string& call) {
  if (call == "send" && mStopped) ++mBlocksAfterStop;
  if (gProgramming && !mCase.between && ++mCalls >= mCase.count) Stop();
  return mWorld.Strike(call, gProgramming);
}

/// Ctrl-C by the person, SIGTERM where nobody sits.
void Shell::Stop() {
  if (mCase.fault != Fault::Cancel || mReport.cancelled) return;
  if (mCase.face == Face::Script) mStopped = mReport.cancelled = true;
  std::raise(mCase.face == Face::Script ? SIGTERM : SIGINT);
}

void Shell::BeginAgain() {
  mWorld.CheckPowerAndCable();
  ++mReport.runs;
  mWorld.Begins();
}

bool Shell::Type(std::string& line) {
  const std::string shown = Unread();
  line = std::to_string(mCase.blockSize);
  if (shown.ends_with("[y/n] ")) line = Answer(shown) ? "y" : "n";
  if (shown.ends_with("[Enter] ") && LastAdvice(shown) == advice::kCycleNow) {
    if (mStopped) mReport.wrong = "complete after a stop";
    mWorld.CheckPowerAndCable();
    mWorld.Power();
  }
  mSaid += "\n";
  return true;
}

bool Shell::Answer(std::string_view question) {
  if (Says(question, "want to Cancel Programming?")) {
    if (std::exchange(mHesitates, false)) return false;
    mStopped = mReport.cancelled = true;
  } else if (Says(question, "Begin programming again?")) {
    if (++mTried["again"] > 3) return false;
    BeginAgain();
  } else if (Says(question, "like to Restart Programming")) {
    const bool had = !mWorld.CheckPowerAndCable();
    return had && ++mTried["restart"] == 1;
  } else if (LastAdvice(question) == advice::kSamePackage) {
    return IsCertain();
  }
  return true;
}

}  // namespace tarnwick::campaign
