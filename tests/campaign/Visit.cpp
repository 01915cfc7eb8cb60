#include "Visit.h"

#include <iostream>

#include "firmware/QALclass.h"
#include "link/Bus.h"
#include "platform/program.h"
#include "programmer/Advice.h"
#include "programmer/DeviceClass.h"
#include "programmer/PackageFit.h"
#include "programmer/ProgrammingRun.h"
#include "programmer/UnfinishedRun.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"
#include "support/PackageText.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"

namespace tarnwick::campaign {
namespace {

constexpr int kMostSteps = 60;
constexpr std::int32_t kLastWord = 95;
constexpr std::array<std::uint8_t, 2> kAddresses = {16, 17};

/// Two images of version 5.12, full to their last word; neither begins as a boot package does.
test::ImageWords WordsOf(bool other) {
  test::ImageWords words = test::CountedWords(kLastWord);
  if (other)
    for (auto& [word, value] : words) value += 0x400;
  const std::array<std::int32_t, 4> version = {0x1A5A, 0x25A5, 5, 12};
  for (std::int32_t i = 0; i < 4; ++i) words[8 + i] = version[static_cast<std::size_t>(i)];
  return words;
}

std::string PackageOf(const Case& c, const std::string& list, bool other) {
  std::vector<test::PackageDevice> devices{{"Azm", kAddresses[0], WordsOf(other), "0512"}};
  if (c.devices == 2) devices.push_back({"Alt", kAddresses[1], WordsOf(other), "0512"});
  return test::PackageText(c.model, list, devices);
}

Image AsImage(const test::ImageWords& words) {
  Image image;
  for (const auto& [word, value] : words) image.push_back(value);
  return image;
}

/// All that a run can change in the mount.
std::string Snapshot(mount::Mount& mount) {
  std::string all;
  for (auto& [address, device] : mount.Devices()) {
    all += std::to_string(static_cast<int>(device.State())) + std::to_string(device.BootVersion());
    for (std::uint32_t place = 0; place < 4; ++place) all += " " + std::to_string(device.Words().At(place));
    for (std::uint32_t word = 0; word <= kLastWord; ++word)
      all += " " + std::to_string(device.Words().ImageWord(word));
  }
  return all;
}

bool Says(std::string_view text, std::string_view words) {
  return text.find(words) != std::string_view::npos;
}

}  // namespace

Visit::Visit(const Case& played) : mCase(played) {
  Seam<ui::IUserInterface>::Install(*this);
  Seam<ILinkLibrary>::Install(mRig.link);
  mRig.link.onCall = [this](const std::string& call) { return Strike(call); };
  mRig.hangsUp = mCase.fault == Fault::HangUp;
  mRig.mount.Link({.kind = mCase.handControl ? wire::LinkKind::HandControl : wire::LinkKind::Direct});
  for (std::size_t i = 0; i < static_cast<std::size_t>(mCase.devices); ++i) {
    mount::DeviceSetup setup{.model = mCase.model, .revision = mCase.revision, .claims = mCase.claims};
    setup.bootVersion = mCase.oldLoader[i] ? 1 : 2;
    if (mCase.firstVersion3) setup.major = 3, setup.minor = 0;
    mRig.mount.Put(kAddresses[i], setup);
  }
  mBefore = Snapshot(mRig.mount);
  std::filesystem::remove(UnfinishedPath());
}

Visit::~Visit() {
  Seam<ILinkLibrary>::Uninstall();
  Seam<ui::IUserInterface>::Uninstall();
}

Result Visit::Play() {
  for (int step = 0; step < kMostSteps && mPage != Page::Left; ++step) {
    try {
      Tell("-- page " + std::to_string(static_cast<int>(mPage)) + ", " + mPackage);
      switch (mPage) {
        case Page::Start:
          StartProgram();
          break;
        case Page::Port:
          NextOnPort();
          break;
        case Page::Package:
          NextOnPackage();
          break;
        default:
          Begin();
      }
    } catch (const Killed&) {
      mRig.link.Restart();
      mPage = Page::Start;
    }
  }
  if (mPage != Page::Left) GiveUp("no end");
  if (!mGivenUp) Judge();
  mResult.struck = mStruck;
  return mResult;
}

void Visit::StartProgram() {
  test::ResetGlobals();
  gModelOverride = mCase.modelOverride;
  gTypeOverride = mCase.typeOverride;
  gBlockOverride = mCase.blockSize != 0;
  gComPort = "COM5";
  test::WriteFile(program::This().folder / "MotorControllers/main.qal",
                  PackageOf(mCase, mCase.list, mReplaced));
  ShowUnfinished();
  ChooseDeviceClass(0);
  mRows.clear();
  mPage = Page::Port;
}

void Visit::NextOnPort() {
  mAdvice = {};
  if (FindDevices()) {
    mPage = Page::Package;
  } else if (mAdvice != advice::kOpenAgain || ++mTried["open"] > 9) {
    GiveUp("the port page");
  }
}

void Visit::NextOnPackage() {
  const std::filesystem::path path = gFirmwareDir / (mPackage + ".qal");
  const bool main = mPackage == "main";
  if (!main || !std::filesystem::exists(path))  // Fetched.
    test::WriteFile(path, PackageOf(mCase, main ? mCase.list : mPackage.substr(4), mReplaced && main));
  mAdvice = {};
  gQAL->LoadQALfile(path);
  if (!PackageFits()) return Follow(mAdvice);
  Status();
  mChosen = AsImage(WordsOf(mReplaced && main));
  mJudged = gQAL->Identity();
  mPage = Page::Run;
}

/// The page with the packages, reached by Back.
void Visit::BackToPackage() {
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    ForgetRevisions(row);
    RefreshDevice(row);
  }
  mPage = Page::Package;
}

void Visit::Status() {
  RefreshDevices();
}

void Visit::Begin() {
  const bool together = mRows.empty();
  std::vector<std::int32_t> rows = mRows;
  for (std::int32_t row = 1; together && row <= gDeviceCount(); ++row)
    if (gDevices[row].QalIndex > 0) rows.push_back(row);
  if (++mResult.visits == 2 && mCase.again) mRig.faults.Play("cut " + std::to_string(mCase.againAt));
  mAdvice = {};
  mTried["restart"] = 0;
  mCancelled = mBetween = false;
  mLabel.clear();
  mBlocksAfterCancel = 0;
  ProgrammingRun run(rows, together, mJudged);
  run.Execute(*this);
  if (mBlocksAfterCancel > (mBetween ? 0 : 1)) mResult.wrong = "went on after a cancel";
  for (const RowOutcome& outcome : run.Outcomes()) {
    const std::string line = OutcomeText(outcome);
    Tell(line);
    if (Says(line, "stopped at")) mWanted.erase(outcome.Row);
    const bool once = Says(line, advice::kOnceMore);
    if (once) mRig.faults.Power(), Status();
    if (Says(line, "5.12 written") && !(once && ++mTried["once more"] < 3)) mWanted[outcome.Row] = mChosen;
  }
  for (const RowOutcome& outcome : run.Outcomes())
    if (!mWanted.contains(outcome.Row)) return ReadOutcome(outcome.Row, OutcomeText(outcome));
  for (mRow = 1; mRow <= mCase.devices; ++mRow)
    if (!mWanted.contains(mRow)) return mRows.assign(1, mRow);
  mRig.CheckPowerAndCable();
  mRig.faults.Power();
  mPage = Page::Left;
}

void Visit::ReadOutcome(std::int32_t row, const std::string& line) {
  mRow = row;
  const std::string seen = "HwRev ";
  if (const std::size_t at = line.find("(last seen: "); at != std::string::npos)
    if (const std::size_t named = line.find(seen, at); named < line.find(')', at) + 2)
      mNamed = std::stoi(line.substr(named + seen.size()));
  for (const std::string_view each : {advice::kBeginAgain, advice::kAskAgain, advice::kChooseAgain,
                                      advice::kNameRevision, advice::kOnceMore})
    if (Says(line, each)) return Follow(each);
  if (mAdvice == advice::kReadPage) mAdvice = {};
  if (mAdvice.empty() && Says(line, "not touched")) return mRows.assign(1, row);
  Follow(mAdvice);
}

/// Does what the advice says, on the page where it was read.
void Visit::Follow(std::string_view advised) {
  const bool run = mPage == Page::Run;
  if (advised == advice::kBeginAgain) {
    mRig.CheckPowerAndCable();
    mRows.assign(1, mRow);
  } else if (advised == advice::kAskAgain) {
    mRig.CheckPowerAndCable();
    Status();
    mRows.assign(1, mRow);
    if (gDevices[mRow].State > McState::NoResponse) return;
    BackToPackage();
    mPage = Page::Port;
  } else if (advised == advice::kOnceMore) {
    mRows.assign(1, mRow);
  } else if (advised == advice::kChooseAgain) {
    mRig.CheckPowerAndCable();
    BackToPackage();
  } else if (advised == advice::kChooseDevice) {
    mRows.assign(1, 1);
  } else if (advised == advice::kNameRevision || advised == advice::kOtherPackage) {
    if (++mTried[std::string(advised)] % 2 == 1) return Status();
    const bool untouched = Snapshot(mRig.mount) == mBefore;
    if ((advised == advice::kOtherPackage && untouched) || mTried[std::string(advised)] > 5)
      return GiveUp("refused");
    if (run) BackToPackage();
    ChooseNamed();
  } else if (advised == advice::kSamePackage) {
    GiveUp("refused");
  } else {
    GiveUp("nothing is advised");
  }
}

/// A package that names one revision alone: the one of the report, else the one that was read somewhere.
void Visit::ChooseNamed() {
  std::int32_t known = 0;
  for (std::int32_t row = 1; row <= mCase.devices && known == 0; ++row) known = EffectiveHwRev(row);
  if (known == 0) known = mNamed;
  if (known == 0) return GiveUp("no revision is known");
  mPackage = "only" + std::to_string(known);
}

void Visit::GiveUp(const std::string& why) {
  mPage = Page::Left;
  mGivenUp = true;
  mResult.end = Snapshot(mRig.mount) == mBefore ? End::Refused : End::Bad;
  if (mResult.end == End::Bad) mResult.wrong = "lost: " + why;
}

void Visit::Judge() {
  for (std::size_t i = 0; i < static_cast<std::size_t>(mCase.devices); ++i) {
    mount::Device& device = mRig.mount.Devices().at(kAddresses[i]);
    const Image& wanted = mWanted.at(static_cast<std::int32_t>(i) + 1);
    for (std::uint32_t word = 0; word < wanted.size(); ++word)
      if (device.Words().ImageWord(word) != wanted[word]) mResult.wrong = "a wrong word";
    if (device.State() != mount::RunState::Running) mResult.wrong = "does not run";
    const bool renews = mCase.revision == 2 || mCase.revision == 5 || mCase.revision == 6;
    if (device.BootVersion() != (renews || !mCase.oldLoader[i] ? 2 : 1))
      mResult.wrong = "a wrong boot loader";
  }
  if (!ReadUnfinished().empty()) mResult.wrong = "a note of what was done";
  mResult.end = mResult.wrong.empty() ? End::Done : End::Bad;
}

void Visit::Tell(std::string_view what) const {
  if (mCase.tell) std::cout << what << std::endl;
}

ui::Answer Visit::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon) {
  Tell(text);
  mAdvice = advice::OfMessage(text);
  const bool note = Says(text, "begun and not ended") && Says(text, advice::kResume);
  if (note) {
    if (const std::size_t at = text.find("HwRev "); at != std::string_view::npos)
      mNamed = std::stoi(std::string(text.substr(at + 6)));
    return ui::Answer::Yes;
  }
  if (mAdvice == advice::kCycleNow) {
    if (mCancelled) mResult.wrong = "complete after a cancel";
    mRig.CheckPowerAndCable();
    mRig.faults.Power();
  }
  if (mAdvice == advice::kOpenAgain) mRig.CheckPowerAndCable();
  if (mAdvice == advice::kTryOnce) {
    const bool had = !mRig.dark;
    mRig.CheckPowerAndCable();
    return had && ++mTried["restart"] == 1 ? ui::Answer::Yes : ui::Answer::No;
  }
  return buttons == ui::Buttons::Ok ? ui::Answer::Ok : ui::Answer::Yes;
}

std::string Visit::InputBox(std::string_view, std::string_view, std::string_view) {
  return std::to_string(mCase.blockSize);
}

void Visit::PumpEvents() {
  if (!gProgramming || mCase.fault != Fault::Cancel || mStruck) return;
  if (mCase.between ? !mLabel.ends_with(" 100%") : ++mPumps != mCase.count) return;
  mStruck = mCancelled = gCancelProgram = true;
  mBetween = mLabel.ends_with(" 100%");
}

bool Visit::Strike(const std::string& call) {
  if (gProgramming && ++mCalls == mCase.count && mCase.fault == Fault::Kill) {
    mStruck = true;
    throw Killed();
  }
  if (call == "send") StrikeBlock();
  const bool fails = mCase.fault == Fault::FailedCall && call == mCase.call && ++mKinds == mCase.count;
  mStruck = mStruck || fails;
  return fails;
}

void Visit::StrikeBlock() {
  if (mCancelled) ++mBlocksAfterCancel;
  if (++mBlocks != mCase.count) return;
  const std::filesystem::path path = program::This().folder / "MotorControllers/main.qal";
  switch (mCase.fault) {
    case Fault::Cut:
    case Fault::Pull:
    case Fault::HangUp:
      mStruck = true;
      mRig.faults.Play((mCase.fault == Fault::Cut ? "cut " : "pull ") + std::to_string(mCase.byte));
      break;
    case Fault::Deleted:
      mStruck = true;
      std::filesystem::remove(path);
      break;
    case Fault::Replaced:
      mStruck = mReplaced = true;
      test::WriteFile(path, PackageOf(mCase, mCase.list, true));
      break;
    default:
      break;
  }
}

}  // namespace tarnwick::campaign
