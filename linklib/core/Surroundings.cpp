#include "linklib/Surroundings.h"

#include "linklib/Frame.h"
#include "ports/ports.h"

namespace tarnwick::wire {

std::unique_ptr<serial::ILine> PortOpener::Open(const std::string& name, std::error_code& error) {
  if (const auto device = ports::DeviceOf(mFolder, name)) return serial::Open(*device, kBaseSpeed, error);
  error = std::make_error_code(std::errc::no_such_device);
  return nullptr;
}

Duration SteadyClock::Now() {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace tarnwick::wire
