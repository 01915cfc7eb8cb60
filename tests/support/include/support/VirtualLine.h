// The link library's core and the simulated mount's core, joined in one process on virtual time.
#pragma once

#include <algorithm>
#include <memory>
#include <string>

#include "mount/Line.h"
#include "mount/Mount.h"
#include "tarnwick/ISerialPort.h"

namespace tarnwick::test {

/// The line, the clock and the opener of the one port "COM5". Time passes only while the library
/// waits. What happens to the bytes on their way is the test's to say, by `line`.
class VirtualLine : public wire::IClock, public wire::IPortOpener {
 public:
  explicit VirtualLine(mount::Mount& mount) : mEndpoint(mount) {}

 private:
  mount::Endpoint mEndpoint;
  int mSpeed = wire::kBaseSpeed;
  wire::Duration mNow = std::chrono::seconds(1000);
  wire::Bytes mArrived;

 public:
  mount::Line line{mEndpoint};
  std::size_t piece = 256;  ///< Most bytes that one read gives.
  bool hungUp = false;      ///< Each use of the line fails.

  wire::Duration Now() override { return mNow; }
  void Pass(wire::Duration time) { mNow += time; }

  std::unique_ptr<wire::ISerialPort> Open(const std::string& name) override {
    if (name != "COM5") return nullptr;
    mSpeed = wire::kBaseSpeed;
    return std::make_unique<Port>(*this);
  }

 private:
  class Port : public wire::ISerialPort {
   public:
    explicit Port(VirtualLine& line) : mLine(line) {}
    bool Speed(int speed) override {
      mLine.mSpeed = speed;
      return !mLine.hungUp;
    }
    bool Write(std::span<const std::uint8_t> bytes, wire::Duration) override {
      mLine.line.Send(bytes, mLine.mSpeed, mLine.mNow);
      return !mLine.hungUp;
    }
    int Read(std::span<std::uint8_t> buffer, wire::Duration limit) override {
      return mLine.Receive(buffer, limit);
    }

   private:
    VirtualLine& mLine;
  };

  int Receive(std::span<std::uint8_t> buffer, wire::Duration limit) {
    for (const wire::Duration end = mNow + limit; !hungUp;
         mNow = std::clamp(line.Due().value_or(end), mNow, end)) {
      const wire::Bytes bytes = line.Take(mSpeed, mNow);
      mArrived.insert(mArrived.end(), bytes.begin(), bytes.end());
      if (!mArrived.empty() || mNow >= end) break;
    }
    if (hungUp) return -1;
    const std::size_t count = std::min({buffer.size(), mArrived.size(), piece});
    const auto stop = mArrived.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(mArrived.begin(), stop, buffer.begin());
    mArrived.erase(mArrived.begin(), stop);
    return static_cast<int>(count);
  }
};

}  // namespace tarnwick::test
