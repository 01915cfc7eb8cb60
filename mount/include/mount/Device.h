// One simulated device on the mount's bus: its firmware, its boot loader and its program memory.
//
// What it answers in which state is laid down in docs/link-protocol.md.
#pragma once

#include <cstdint>

#include "linklib/Frame.h"
#include "mount/Memory.h"

namespace tarnwick::mount {

enum class RunState : std::uint8_t { Silent = 0, Running = 1, Boot = 2, Program = 3 };

/// How a device starts out.
struct DeviceSetup {
  int model = 5;
  int revision = 2;
  int bootVersion = 2;  ///< 1 is an old boot loader; one of 2 or more counts as renewed.
  int claims = -1;      ///< Revision that an old boot loader tells; -1 for the true one.
  int major = 4;        ///< Version of the firmware that a running device comes with.
  int minor = 2;
  RunState state = RunState::Running;
};

/// What a device answers.
struct Reply {
  wire::Kind kind = wire::Kind::Done;
  wire::Bytes payload;

  static Reply Done(wire::Bytes payload = {}) { return {wire::Kind::Done, std::move(payload)}; }
  static Reply Refused(wire::Reason reason) {
    return {wire::Kind::Refused, {static_cast<std::uint8_t>(reason)}};
  }
};

/// Version of a firmware image.
struct Version {
  int major = 0;
  int minor = 0;
};

class Device {
 public:
  /// A running device has a complete image of the set version; in all other states it has none.
  explicit Device(const DeviceSetup& setup);

  /// Answers a request to this device. Not to be called on a silent one.
  Reply Handle(wire::Command command, const wire::Bytes& payload);
  /// A complete image runs, an incomplete one leaves the device in boot mode; a silent one stays so.
  void PowerCycle();

  RunState State() const { return mState; }
  void State(RunState state) { mState = state; }
  int Model() const { return mModel; }
  int Revision() const { return mRevision; }
  int BootVersion() const { return mBootVersion; }
  bool Complete() const { return mComplete; }
  /// Version by the marker words of the image; zeros when it has none.
  Version ImageVersion() const;
  Memory& Words() { return mMemory; }

 private:
  bool Takes(wire::Command command) const;
  Reply TellState() const;
  Reply TellBootRevision();
  Reply Start();
  Reply Write(const wire::Bytes& payload);
  Reply End();
  Reply Check(const wire::Bytes& payload) const;
  Reply Read(const wire::Bytes& payload) const;

  int mModel;
  int mRevision;
  int mBootVersion;
  int mClaims;
  RunState mState;
  bool mComplete;
  Memory mMemory;
};

}  // namespace tarnwick::mount
