// The simulated mount: what stands behind the line, without the line.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "linklib/Frame.h"
#include "mount/Device.h"

namespace tarnwick::mount {

/// What takes a device long.
struct Busy {
  std::chrono::milliseconds start{}, end{}, check{};
  bool deaf = false;  ///< It hears nothing meanwhile; else it refuses what comes in as busy.
};

/// What the serial line runs through, and what the mount can do.
struct LinkSetup {
  wire::LinkKind kind = wire::LinkKind::Direct;
  bool upgradeSupported = true;
  int fastest = 115200;  ///< Fastest line speed; one of `wire::kSpeeds`.
  bool first = false;    ///< Of the protocol's first version: no short frames, no times.
  Busy busy{};
};

class Mount {
 public:
  explicit Mount(const LinkSetup& link = {}) : mLink(link), mSpeed(HomeSpeed()) {}

  /// Puts a device at a bus address, in place of the one there.
  void Put(std::uint8_t address, const DeviceSetup& setup);
  /// The devices by address.
  std::map<std::uint8_t, Device>& Devices() { return mDevices; }

  /// What the line runs through; a change forgets a lock.
  const LinkSetup& Link() const { return mLink; }
  void Link(const LinkSetup& link);

  /// Speed of the mount's end of the line, from the end of the present answer on.
  int Speed() const { return mSpeed; }
  /// The speed after switching on.
  int HomeSpeed() const { return std::min(wire::kBaseSpeed, mLink.fastest); }
  void ToHomeSpeed() { mSpeed = HomeSpeed(); }

  /// The answer to a request, or nothing where the mount stays silent. The same request to a device
  /// again is answered as before and not carried out again.
  std::optional<wire::Frame> Handle(const wire::Frame& request);
  /// True of the last request to a device that was done: it will be answered again, not carried out.
  bool IsRepeated(const wire::Frame& request) const;
  /// How long the mount takes for a request that was done, by what it was set to.
  std::chrono::milliseconds TimeOf(wire::Command command) const;
  /// Answers what comes over the line in place of `Handle`, which it may call; none by itself.
  std::function<std::optional<wire::Frame>(const wire::Frame& request)> instead;
  /// The answer to a request that came over the line.
  std::optional<wire::Frame> Hear(const wire::Frame& request) {
    return instead ? instead(request) : Handle(request);
  }
  /// Takes power away and gives it back: all that is not in a device's program memory is forgotten.
  void PowerCycle();

 private:
  std::optional<Reply> Answer(const wire::Frame& request);
  Reply AnswerItself(const wire::Frame& request);
  Reply Identify();
  Reply TellTimes() const;
  Reply ChangeSpeed(std::size_t code);

  LinkSetup mLink;
  std::map<std::uint8_t, Device> mDevices;
  int mSpeed;
  bool mLocked = false;
  std::optional<wire::Frame> mLastRequest;  ///< The last one to a device that was done, and its answer.
  wire::Frame mLastAnswer;
};

}  // namespace tarnwick::mount
