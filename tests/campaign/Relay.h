// Another mount, on a terminal, behind the line that the simulated mount is played on: its faults in real
// time.
#pragma once

#include <array>
#include <thread>

#include "support/VirtualLine.h"

namespace tarnwick::campaign {

class Relay final : public test::VirtualLine {
 public:
  /// The terminal is the port COM5 of `folder`.
  Relay(mount::Mount& unused, const std::filesystem::path& folder)
      : VirtualLine(mFar), mFar(unused), mTerminal(folder) {}

  wire::Duration Now() override { return now = mClock.Now(); }

 private:
  /// The other mount's end of the line. It is looked after all the time, since it does not tell when it
  /// speaks.
  struct Far final : mount::Endpoint {
    using Endpoint::Endpoint;
    wire::Bytes Receive(wire::ByteView bytes, Time) override {
      if (port) port->Write(bytes, std::chrono::milliseconds(100));
      return {};
    }
    wire::Bytes Tick(Time) override {
      std::array<std::uint8_t, 256> read{};
      std::error_code error;
      const std::size_t count = port ? port->Read(read, {}, error) : 0;
      return {read.begin(), read.begin() + static_cast<std::ptrdiff_t>(count)};
    }
    std::optional<Time> Due() const override { return Time{}; }
    void Clear() override {}
    int Speed() const override { return speed; }

    std::unique_ptr<serial::ILine> port;
    int speed = wire::kBaseSpeed;
  };

  std::error_code Connect(bool again) override {
    std::error_code error;
    mFar.port.reset();
    mFar.port = again ? mTerminal.OpenAgain(error) : mTerminal.Open("COM5", error);
    return error;
  }
  std::error_code Change(int speed) override {
    mFar.speed = speed;
    return mFar.port->Speed(speed);
  }
  void Wait(wire::Duration) override { std::this_thread::sleep_for(std::chrono::microseconds(300)); }

  Far mFar;
  wire::PortOpener mTerminal;
  wire::SteadyClock mClock;
};

}  // namespace tarnwick::campaign
