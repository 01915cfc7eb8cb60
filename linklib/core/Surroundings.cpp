#include "linklib/Surroundings.h"

#include "linklib/Frame.h"
#include "ports/ports.h"

namespace tarnwick::wire {

std::unique_ptr<serial::ILine> PortOpener::Open(const std::string& name, std::error_code& error) {
  const auto device = ports::DeviceOf(mFolder, name);
  mDevice = device.value_or(std::filesystem::path());
  mAdapter = serial::AdapterOf(mDevice, mSystem);
  if (!mAdapter && serial::IsUsb(mDevice)) mDevice.clear();
  if (device) return serial::Open(*device, kBaseSpeed, error, mSystem);
  error = std::make_error_code(std::errc::no_such_device);
  return nullptr;
}

std::unique_ptr<serial::ILine> PortOpener::OpenAgain(std::error_code& error) {
  const std::filesystem::path device = mAdapter ? serial::FindAdapter(*mAdapter, mSystem) : mDevice;
  // A device that was none of the computer's USB has not become one.
  const bool other = !mAdapter && serial::AdapterOf(mDevice, mSystem);
  if (!device.empty() && !other) return serial::Open(device, kBaseSpeed, error, mSystem);
  error = std::make_error_code(std::errc::no_such_device);
  return nullptr;
}

Duration SteadyClock::Now() {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace tarnwick::wire
