#include "link/Bus.h"

#include <algorithm>

#include "link/Connection.h"
#include "link/DeviceRecord.h"
#include "link/Devices.h"
#include "platform/ui.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

bool IsSilent(const DeviceEntry& device) {
  return device.State == McState::NoResponse;
}

/// A motor controller of the first model, older than the first firmware that can be upgraded.
bool IsTooOld(const DeviceEntry& device) {
  return device.Model == 1 && device.Version > 0.0 && device.Version < 3.0;
}

}  // namespace

bool FindDevices() {
  if (!OpenConnection()) return false;
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    ForgetRevisions(row);
    gDevices[row].Model = 0;
    RefreshDevice(row);
  }
  RecordDevices();
  if (std::all_of(gDevices.begin(), gDevices.end(), IsSilent)) {
    ui::MessageBox("Error - No Devices found on " + gComPort);
    CloseConnection();
    return false;
  }
  if (std::any_of(gDevices.begin(), gDevices.end(), IsTooOld)) {
    ui::MessageBox(
        "Error - Version of Motor Controller does not support Upgrading!\r\n\r\n"
        "Contact Halcyrion for a replacement Motor Controller Board",
        ui::Buttons::Ok, ui::Icon::Critical);
    return false;
  }
  return true;
}

void GoOnWithoutPort() {
  if (IsConnected()) CloseConnection();
  gComPort.clear();
}

}  // namespace tarnwick
