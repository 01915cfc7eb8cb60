// Puts every module global back to its start value, so that no test sees another's.
#pragma once

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "link/LastSeen.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"

namespace tarnwick::test {

inline void ResetGlobals() {
  gComPort.clear();
  gDeviceClass = 0;
  gDevices.Assign({});
  ForgetSeen();
  gQAL = std::make_unique<QALclass>(true);
  gDebugFilter4 = gDebugFilter6 = gModelOverride = gBlockOverride = gTypeOverride = false;
  gFirmwareDir.clear();
  gVerifying = gCancelVerify = gProgramming = gCancelProgram = false;
  gTotalWords = 0;
}

}  // namespace tarnwick::test
