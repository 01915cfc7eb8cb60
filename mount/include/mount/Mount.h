// The simulated mount: what stands behind the line, without the line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "mount/Device.h"
#include "tarnwick/Frame.h"

namespace tarnwick::mount {

/// What the serial line runs through.
struct LinkSetup {
  wire::LinkKind kind = wire::LinkKind::Direct;
  bool upgradeSupported = true;
};

class Mount {
 public:
  explicit Mount(const LinkSetup& link = {}) : mLink(link) {}

  /// Puts a device at a bus address, in place of the one there.
  void Put(std::uint8_t address, const DeviceSetup& setup);
  /// The devices by address.
  std::map<std::uint8_t, Device>& Devices() { return mDevices; }

  /// The answer to a request, or nothing where the mount stays silent. The same request again is
  /// answered as before and not carried out again.
  std::optional<wire::Frame> Handle(const wire::Frame& request);
  /// Takes power away and gives it back: all that is not in a device's program memory is forgotten.
  void PowerCycle();

 private:
  std::optional<Reply> Answer(const wire::Frame& request);
  Reply AnswerItself(wire::Command command);

  LinkSetup mLink;
  std::map<std::uint8_t, Device> mDevices;
  bool mLocked = false;
  std::optional<wire::Frame> mLastRequest;  ///< The last one that was done, and its answer.
  wire::Frame mLastAnswer;
};

}  // namespace tarnwick::mount
