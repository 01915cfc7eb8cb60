#include "link/DeviceRecord.h"

#include <string>

#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "link/OpeningCause.h"
#include "platform/record.h"
#include "platform/text.h"
#include "settings/Settings.h"

namespace tarnwick {

void RecordDevice(std::int32_t index) {
  const DeviceEntry& device = gDevices[index];
  const std::string version = device.Version == 0.0 ? "unknown" : text::Fixed2(device.Version);
  record::Line("device: " + device.Name + ", address " + std::to_string(device.Address) + ", " +
               device.StateName + ", model " + device.ModelName + " (" + std::to_string(device.Model) +
               "), version " + version + ", HwRev " + FormatHwRev(EffectiveHwRev(index), index) +
               ", boot loader " + (device.BootVersion == 0 ? "unknown" : std::to_string(device.BootVersion)));
}

void RecordDevices() {
  for (std::int32_t index = 1; index <= gDeviceCount(); ++index) RecordDevice(index);
}

void RecordLine() {
  const LinkNote note = ReadLinkNote();
  const std::string device = PortText(gComPort);
  std::string line = "port: " + gComPort + (device.empty() ? "" : " (" + device + ")");
  if (note.speed != 0) {
    line +=
        ", " + std::to_string(note.speed) + " bits per second, " + std::to_string(note.repeats) + " repeats";
  }
  record::Line(line);
}

void RecordLinkFailure(std::string_view what) {
  const std::string cause = ReadLinkNote().cause;
  record::Failure(what, cause.empty() ? "the device refused, or gave no answer in time" : cause);
}

}  // namespace tarnwick
