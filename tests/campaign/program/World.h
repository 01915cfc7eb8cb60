// What lies outside the program: the mount, the cable to it, and what happens to both.
#pragma once

#include <filesystem>

#include "Case.h"
#include "linklib/Surroundings.h"
#include "mount/Faults.h"
#include "support/VirtualLine.h"

namespace tarnwick::campaign {

/// The world as the program has it, through the line, and as the owner's hands have it.
class IWorld : public wire::IClock, public wire::IPortOpener {
 public:
  /// Whatever is off or out is put right. True when the mount had no power.
  virtual bool CheckPowerAndCable() = 0;
  /// Switches the mount off and on.
  virtual void Power() = 0;
  /// The mount's memory is as it was before anything.
  virtual bool Untouched() = 0;
  /// The owner begins a run.
  virtual void Begins() = 0;
  /// The link library is called, in the midst of a run or not. True when that fails and nothing reaches the
  /// mount.
  virtual bool Strike(const std::string& call, bool programming) = 0;
};

/// How the owner's way through the program ended, by what the owner read and did.
struct Report {
  std::string wrong;                          ///< What must never be, told.
  std::string gaveUp;                         ///< Why the owner knows no way on.
  bool cancelled = false;                     ///< A cancel was confirmed.
  int notes = 0;                              ///< Notes of an unfinished run that were shown.
  int runs = 0;                               ///< How often Begin Programming was pressed.
  std::map<std::int32_t, Variant> written{};  ///< By address: the image that the program calls written.
};

/// The world in this process, on virtual time. It owns the program's folder.
class World final : public IWorld {
 public:
  World(const Case& played, std::filesystem::path folder);

  wire::Duration Now() override { return mLine.now; }
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override {
    return mLine.Open(name, error);
  }
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override { return mLine.OpenAgain(error); }
  bool CheckPowerAndCable() override;
  void Power() override { mFaults.Power(); }
  bool Untouched() override { return Snapshot() == mBefore; }
  void Begins() override;
  bool Strike(const std::string& call, bool programming) override;

  /// Whether a motor neither runs nor holds what was to be written.
  bool MotorWaits();
  /// What is wrong with the mount, and with what is left beside the program, when the owner is done.
  std::string Judge(const Report& report);
  bool Struck() const { return mStruck; }
  /// The fault was played from outside.
  void NoteStruck() { mStruck = true; }

 private:
  void StrikeBlock();
  std::string Snapshot();
  bool Holds(std::int32_t address, Variant variant);

  const Case mCase;
  const std::filesystem::path mFolder;
  mount::Mount mMount;
  test::VirtualLine mLine{mMount};
  bool mDark = false;  ///< The mount's lamp is off.
  mount::Faults mFaults;
  Number mBlocks = 0, mKinds = 0, mRuns = 0;
  bool mStruck = false;
  std::string mBefore;
};

}  // namespace tarnwick::campaign
