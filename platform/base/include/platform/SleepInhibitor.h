// The real keeper of the computer's wakefulness.
#pragma once

#include <sys/types.h>

#include "platform/awake.h"

namespace tarnwick {

/// Holds a lock of the system's login manager against sleep, idleness and the closed lid, by its
/// program `systemd-inhibit`. Where there is none, or it is refused, nothing happens and nothing is said.
///
/// The lock lives as long as a pipe to that program, so that it goes with this process however that
/// ends. Nothing is linked, started or looked up before the first `Keep`.
class SleepInhibitor final : public awake::IKeeper {
 public:
  /// Installs itself.
  SleepInhibitor();
  ~SleepInhibitor() override;
  SleepInhibitor(const SleepInhibitor&) = delete;
  SleepInhibitor& operator=(const SleepInhibitor&) = delete;

  void Keep() override;
  void LetGo() override;

 private:
  int mPipe = -1;  ///< Its far end is the program's input.
  pid_t mProcess = -1;
};

}  // namespace tarnwick
