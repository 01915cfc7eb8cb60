// A programming run over the chosen devices, without its window.
//
// A run owns what the user chose and what was judged: the rows, and by what the package is known again. While
// it executes, `gProgramming` stands, and `gCancelProgram`, which it clears when it begins, is the user's
// decision to stop: a block under way is finished, and no further image is begun. The first failure ends the
// run; it has then been shown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "firmware/QalPackage.h"
#include "programmer/Progress.h"
#include "programmer/RunOutcome.h"

namespace tarnwick {

class ProgrammingRun {
 public:
  /// Rows of `gDevices`, in the order in which they are worked on. `together`: chosen as all devices, not one
  /// by itself. `judged` is the package that was held against the devices when it was chosen.
  ProgrammingRun(std::vector<std::int32_t> rows, bool together, QalIdentity judged);

  /// The whole run, from its checks to the last reading of the status. Once.
  void Execute(IProgress& progress);

  /// What became of each row, in order. After `Execute`.
  const std::vector<RowOutcome>& Outcomes() const { return mOutcomes; }

 private:
  class Watch;

  std::vector<std::int32_t> Rows() const;
  bool Check();
  void ForgetUntouched() const;
  bool RefuseTogether() const;
  bool RefusePackage() const;
  bool ProgramRow(RowOutcome& outcome, Watch& watch);
  bool RenewBootLoader(RowOutcome& outcome, Watch& watch);

  const bool mTogether;
  const QalIdentity mJudged;
  std::vector<RowOutcome> mOutcomes;
};

}  // namespace tarnwick
