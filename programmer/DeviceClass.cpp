#include "programmer/DeviceClass.h"

#include <system_error>

#include "link/Devices.h"
#include "platform/files.h"
#include "platform/program.h"
#include "settings/Settings.h"

namespace tarnwick {

void ChooseDeviceClass(std::int32_t deviceClass) {
  SetupDevices(deviceClass);
  gDeviceClass = deviceClass;
  gFirmwareDir = program::This().folder / (gDeviceClass != 0 ? "Accessories" : "MotorControllers");
  std::error_code unreported;
  if (!files::FileExists(gFirmwareDir)) std::filesystem::create_directory(gFirmwareDir, unreported);
}

}  // namespace tarnwick
