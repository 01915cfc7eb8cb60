#include "link/LastSeen.h"

#include <map>

#include "link/Devices.h"

namespace tarnwick {
namespace {

std::map<std::int32_t, SeenDevice> gSeen;

}  // namespace

const SeenDevice& LastSeen(std::int32_t address) {
  static const SeenDevice kNothing;
  const auto found = gSeen.find(address);
  return found == gSeen.end() ? kNothing : found->second;
}

void NoteSeen(std::int32_t index) {
  const DeviceEntry& device = gDevices[index];
  SeenDevice& seen = gSeen[device.Address];
  if (device.Model != 0) {
    seen.Model = device.Model;
    seen.ModelName = device.ModelName;
  }
  const bool untold =
      device.State != McState::Running && HasBootVersion(device.HwRev) && device.BootVersion < 2;
  if (device.HwRev != 0 && !untold) seen.HwRev = device.HwRev;
}

void RecallSeen(std::int32_t address, const SeenDevice& seen) {
  SeenDevice& known = gSeen[address];
  if (known.Model == 0) known.Model = seen.Model, known.ModelName = seen.ModelName;
  if (known.HwRev == 0) known.HwRev = seen.HwRev;
}

void ForgetSeen() {
  gSeen.clear();
}

std::string SeenText(const SeenDevice& seen) {
  const std::string revision = seen.HwRev == 0 ? "" : "HwRev " + std::to_string(seen.HwRev);
  return seen.ModelName + (seen.ModelName.empty() || revision.empty() ? "" : ", ") + revision;
}

}  // namespace tarnwick
