// A note beside the program of the motors whose programming was begun and not ended. It stands from before
// the first call that can take a motor out of its firmware, and goes when that motor was written, so that one
// who finds the program gone in the midst, with the computer's power or by a crash, is told at the next start
// which motor it was and what to do.
//
// A note that cannot be written stops nothing.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "link/LastSeen.h"
#include "programmer/RunOutcome.h"

namespace tarnwick {

struct UnfinishedMotor {
  std::int32_t Address = 0;
  std::string Name;
  SeenDevice Seen;           ///< What it last told of itself.
  std::string Package;       ///< File name of the package.
  bool BootPackage = false;  ///< `Percent` is of the boot package.
  std::int32_t Percent = 0;
};

/// Keeps the note of one row up to date.
class UnfinishedNote {
 public:
  /// The package in `gQAL` is the one to be written to row `row` of `gDevices`.
  explicit UnfinishedNote(std::int32_t row);
  /// The row's image is going to be, or being, written, and got so far. The file is written at the first call
  /// and at each further twentieth, but no more than once a second: a flush costs more than many blocks.
  void Keep(const RowOutcome& outcome);

 private:
  UnfinishedMotor mMotor;
  bool mNoted = false;
  std::chrono::milliseconds mWritten{};  ///< When the file was written last.
};

/// The note's file: beside the program, under its name.
std::filesystem::path UnfinishedPath();
/// The motors that the note names; none when there is no note or it makes no sense.
std::vector<UnfinishedMotor> ReadUnfinished();
/// Takes one motor out of the note; 0 for all, with the file.
void ForgetUnfinished(std::int32_t address);

/// Recalls what the motors of a note told of themselves, and gives what the user is to be told: which they
/// are and, as `way` has it, what to do. Empty without a note.
std::string RecallUnfinished(std::string_view way);

/// At the start of the program: recalls what the motors of a note told of themselves, shows the note with
/// what to do, and asks whether it is to be kept. Nothing happens without a note.
void ShowUnfinished();

}  // namespace tarnwick
