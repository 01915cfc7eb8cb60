#include "Owner.h"

#include <QApplication>
#include <iostream>

#include "Reading.h"
#include "Shell.h"
#include "programmer/Advice.h"
#include "support/TempFolder.h"

namespace tarnwick::campaign {
namespace {

constexpr int kMostSteps = 80;

}  // namespace

Owner::Owner(const Case& played, IWorld& world, const std::filesystem::path& folder)
    : mCase(played),
      mWorld(world),
      mFolder(folder),
      mPackage(played.first),
      mHesitates(played.byte % 2 == 0) {
  Seam<ui::IUserInterface>::Install(*this);
  mLink.before = [this](const std::string& call) { return !call.empty() && OnCall(call); };
}

Owner::~Owner() {
  Seam<ui::IUserInterface>::Uninstall();
}

Report Owner::Play() {
  mScreen.Start();
  for (int step = 0; step < kMostSteps && !mDone; ++step) {
    const int page = mScreen.Page();
    Tell("-- page " + std::to_string(page) + ", " + mPackage);
    if (page == 1) mScreen.Click("cmdStepFwd");
    if (page == 2) NextOnPort();
    if (page == 3) NextOnPackage();
    if (page == 4) Begin();
  }
  if (!mDone) GiveUp("no end");
  mScreen.Click("cmdTerminate");
  if (!mScreen.HasEnded()) mReport.wrong = "the program does not end";
  for (const auto& [motor, variant] : mWritten) mReport.written[kMotors.at(motor)] = variant;
  return mReport;
}

void Owner::NextOnPort() {
  mAdvice = {};
  mScreen.ChoosePort("COM5");
  mScreen.Click("cmdStepFwd");
  if (mScreen.Page() == 2 && (mAdvice != advice::kOpenAgain || ++mTried["open"] > 9)) GiveUp("the port page");
}

void Owner::NextOnPackage() {
  const std::string name = mPackage + ".qal";
  const std::filesystem::path path = mFolder / "MotorControllers" / name;
  if (!std::filesystem::exists(path)) test::WriteFile(path, PackageOf(mCase, mPackage));  // Fetched.
  if (!mScreen.Choose("lstFirmware", name)) return BackTo(2);  // So that the list is read again.
  const bool replaced = mPackage == "main" && test::ReadFile(path) == PackageOf(mCase, "main", true);
  mChosen = replaced ? kReplaced : VariantOf(mPackage);
  mAdvice = {};
  mScreen.Click("cmdStepFwd");
  if (mScreen.Page() == 3) Follow(mAdvice);
}

void Owner::BackTo(int page) {
  while (mScreen.Page() > page) mScreen.Click("cmdStepBack");
}

void Owner::Begin() {
  mAdvice = {};
  mTried["restart"] = 0;
  mCancelled = mBetween = mStopped = false;
  mBlocksAfterCancel = mSent = 0;
  mScreen.Choose("lstDevices", mMotor.empty() ? "All Devices" : mMotor);
  ++mReport.runs;
  mWorld.Begins();
  mRunning = true;
  mScreen.Click("cmdProgram");
  mRunning = false;
  if (mBlocksAfterCancel > (mBetween ? 0 : 1)) mReport.wrong = "went on after a cancel";
  if (!mScreen.IsAtRest()) mReport.wrong = "not at rest behind a run";
  const std::vector<std::string> lines = mScreen.Lines("txtOutcome");
  CheckTold(lines);
  ReadOutcomes(lines);
}

/// How far it got is told as it was.
void Owner::CheckTold(const std::vector<std::string>& lines) {
  bool told = mSent == 0 || mRenewing;
  for (const std::string& line : lines) {
    const bool stopped = Says(line, "stopped at");
    told = told || stopped || Says(line, "5.12 written");
    if (stopped && (mSent == 0 || Says(line, "of the boot loader") != mRenewing))
      mReport.wrong = "told wrongly: " + line;
  }
  if (!told) mReport.wrong = "blocks were sent, and nobody is told";
}

void Owner::ReadOutcomes(const std::vector<std::string>& lines) {
  const auto motorOf = [](const std::string& line) { return line.substr(0, line.find(" Motor") + 6); };
  for (const std::string& line : lines) {
    Tell(line);
    if (Says(line, "stopped at")) mWritten.erase(motorOf(line));
    const bool once = Says(line, advice::kOnceMore);
    if (once) mWorld.Power(), mScreen.Click("cmdRefresh");
    if (Says(line, "5.12 written") && !(once && ++mTried["once more"] < 3)) mWritten[motorOf(line)] = mChosen;
  }
  for (const std::string& line : lines)
    if (!mWritten.contains(motorOf(line))) return ReadOutcome(motorOf(line), line);
  for (const std::string& motor : mScreen.Rows("lstDevices"))
    if (kMotors.contains(motor) && !mWritten.contains(motor)) {
      mMotor = motor;
      return;
    }
  mWorld.CheckPowerAndCable();
  mWorld.Power();
  mDone = true;
}

void Owner::ReadOutcome(const std::string& motor, const std::string& line) {
  mMotor = motor;
  if (const std::size_t at = line.find("(last seen: "); at != std::string::npos)
    if (const std::int32_t named = NumberBehind(line.substr(at, line.find("): ", at) - at), "HwRev "))
      mNamed = named;
  for (const std::string_view each : {advice::kBeginAgain, advice::kAskAgain, advice::kChooseAgain,
                                      advice::kNameRevision, advice::kOnceMore})
    if (Says(line, each)) return Follow(each);
  if (mAdvice == advice::kReadPage) mAdvice = {};
  if (!mAdvice.empty() || !Says(line, "not touched")) Follow(mAdvice);
}

/// Does what the advice says, on the page where it was read.
void Owner::Follow(std::string_view advised) {
  const std::string text(advised);
  if (advised == advice::kBeginAgain) {
    mWorld.CheckPowerAndCable();
  } else if (advised == advice::kAskAgain) {
    mWorld.CheckPowerAndCable();
    mScreen.Click("cmdRefresh");
    const std::string state = mScreen.Reported(mMotor, "State");
    if (state == "No Response" || state == "Unknown") BackTo(2);
  } else if (advised == advice::kChooseAgain) {
    mWorld.CheckPowerAndCable();
    BackTo(3);
  } else if (advised == advice::kChooseDevice) {
    mMotor = "AZM(RA) Motor";
  } else if (advised == advice::kNameRevision || advised == advice::kOtherPackage) {
    if (++mTried[text] % 2 == 1) return mScreen.Click("cmdRefresh");
    RefuseOrTryAnother(text);
  } else if (advised == advice::kSamePackage) {
    RefuseOrTryAnother(text);
  } else if (advised != advice::kOnceMore) {
    GiveUp("nothing is advised");
  }
}

/// This package will not do: the one for this mount, then one that names a revision alone. Where neither
/// will, the mount is as it was.
void Owner::RefuseOrTryAnother(const std::string& advised) {
  const bool first = mPackage == "foreign" || mPackage == "others";
  const bool named = advised == advice::kNameRevision || !mWorld.Untouched();
  if (!first && (!named || advised == advice::kSamePackage || mTried[advised] > 5)) return GiveUp("refused");
  BackTo(3);
  first ? void(mPackage = "main") : ChooseAnother();
}

/// A package that names one revision alone: the one of the report, else the one that was read somewhere.
void Owner::ChooseAnother() {
  std::int32_t known = 0;
  for (const auto& [motor, address] : kMotors)
    if (known == 0) known = std::atoi(mScreen.Reported(motor, "HwRev").c_str());
  if (known == 0) known = mNamed;
  if (known == 0) return GiveUp("no revision is known");
  // Whoever had program and package all the time goes on with the package that named the revision.
  const bool had =
      mCase.fault != Fault::Kill && mCase.fault != Fault::Deleted && mCase.fault != Fault::Replaced;
  if (mPackage == "main" && !mCase.list.empty() && had)
    mReport.wrong = "the package that was begun with no longer does";
  mPackage = "only" + std::to_string(known);
}

void Owner::GiveUp(const std::string& why) {
  mDone = true;
  mReport.gaveUp = why;
}

void Owner::Tell(std::string_view what) const {
  if (mCase.tell) std::cout << what << std::endl;
}

bool Owner::OnCall(const std::string& call) {
  if (call == "send") {
    ++mSent;
    mRenewing = mScreen.Progress().starts_with("Upgrading");
    if (mCancelled) ++mBlocksAfterCancel;
  }
  return mWorld.Strike(call, mRunning);
}

ui::Answer Owner::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon) {
  Tell(text);
  mAdvice = advice::OfMessage(text);
  return buttons == ui::Buttons::Ok ? (Answered(text), ui::Answer::Ok) : Answered(text);
}

ui::Answer Owner::Answered(std::string_view text) {
  using enum ui::Answer;
  mStopped = mStopped || mAdvice == advice::kReadPage || mAdvice == advice::kTryOnce;
  if (Says(text, "want to Exit")) {
    // From a stop on, the close box asks about the program.
    if (mRunning && !mStopped) mReport.wrong = "asked about the program in the midst of a run";
    return mRunning ? No : Yes;
  }
  if (Says(text, "begun and not ended") && Says(text, advice::kResume)) {
    ++mReport.notes;
    mNamed = NumberBehind(text, "HwRev ");
    mPackage = PackageNamed(text);
  } else if (Says(text, "want to Cancel Programming?")) {
    if (std::exchange(mHesitates, false)) return No;
    mCancelled = mReport.cancelled = true;
    mBetween = mScreen.Progress().ends_with(" 100%");
  } else if (mAdvice == advice::kCycleNow) {
    if (mCancelled) mReport.wrong = "complete after a cancel";
    mWorld.CheckPowerAndCable();
    mWorld.Power();
  } else if (mAdvice == advice::kOpenAgain) {
    mWorld.CheckPowerAndCable();
  } else if (mAdvice == advice::kTryOnce) {
    const bool had = !mWorld.CheckPowerAndCable();
    return had && ++mTried["restart"] == 1 ? Yes : No;
  } else if (mAdvice == advice::kSamePackage) {
    // Of another package than its own the owner is not certain.
    if ((mPackage == "foreign" || mPackage == "others") && mWorld.Untouched()) return No;
  }
  return Yes;
}

std::string Owner::InputBox(std::string_view, std::string_view, std::string_view) {
  return std::to_string(mCase.blockSize);
}

void Owner::PumpPainting() {
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void Owner::PumpEvents() {
  QCoreApplication::processEvents();
  const bool done = mReport.cancelled || mCase.fault != Fault::Cancel;
  if (!mRunning || done || mPumping) return;
  if (mCase.between ? mScreen.Progress().ends_with(" 100%") : ++mPumps >= mCase.count) PressCancel();
}

void Owner::PressCancel() {
  if (mScreen.Caption("cmdTerminate") != "Cancel") return;  // The run is over, or not yet on.
  mPumping = true;
  if (!mScreen.IsLive("cmdTerminate")) mReport.wrong = "Cancel is dead";
  mScreen.Click("cmdTerminate");
  if (mCancelled == mScreen.IsLive("cmdTerminate"))
    mReport.wrong = "Cancel is dead after No, or live after Yes";
  mPumping = false;
}

Report PlayFace(const Case& played, IWorld& world, const std::filesystem::path& folder) {
  if (played.face == Face::Window) return Owner(played, world, folder).Play();
  return Shell(played, world, folder).Play();
}

}  // namespace tarnwick::campaign
