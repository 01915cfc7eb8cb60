// The link library's core and the simulated mount's core, joined in one process on virtual time.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "mount/Endpoint.h"
#include "mount/Mount.h"
#include "tarnwick/ISerialPort.h"

namespace tarnwick::test {

/// The line, the clock and the opener of the one port "COM5". Time passes only while the library
/// waits. What happens to the bytes on their way is the test's to say.
class VirtualLine : public wire::IClock, public wire::IPortOpener {
 public:
  using Damage = std::function<void(wire::Bytes&)>;

  explicit VirtualLine(mount::Mount& mount) : mEndpoint(mount) {}

  Damage toMount;            ///< Applied to each piece that the library sends.
  Damage toLibrary;          ///< Applied to each piece that the mount sends.
  wire::Duration latency{};  ///< From question to answer.
  std::size_t piece = 256;   ///< Most bytes that one read gives.
  bool hungUp = false;       ///< Each use of the line fails.

  wire::Duration Now() override { return mNow; }
  void Pass(wire::Duration time) { mNow += time; }
  mount::Endpoint& End() { return mEndpoint; }

  std::unique_ptr<wire::ISerialPort> Open(const std::string& name) override {
    return name == "COM5" ? std::make_unique<Port>(*this) : nullptr;
  }

 private:
  class Port : public wire::ISerialPort {
   public:
    explicit Port(VirtualLine& line) : mLine(line) {}
    bool Write(std::span<const std::uint8_t> bytes, wire::Duration) override { return mLine.Send(bytes); }
    int Read(std::span<std::uint8_t> buffer, wire::Duration limit) override {
      return mLine.Receive(buffer, limit);
    }

   private:
    VirtualLine& mLine;
  };

  bool Send(wire::ByteView view) {
    wire::Bytes bytes(view.begin(), view.end());
    if (toMount) toMount(bytes);
    Queue(mEndpoint.Receive(bytes, mNow));
    return !hungUp;
  }

  void Queue(wire::Bytes bytes) {
    if (toLibrary) toLibrary(bytes);
    if (!bytes.empty()) mComing.emplace_back(mNow + latency, std::move(bytes));
  }

  int Receive(std::span<std::uint8_t> buffer, wire::Duration limit) {
    const wire::Duration end = mNow + limit;
    while (!hungUp && (mComing.empty() || mComing.front().first > mNow)) {
      wire::Duration next = mEndpoint.Due().value_or(end);
      if (!mComing.empty()) next = std::min(next, mComing.front().first);
      mNow = std::max(mNow, std::min(next, end));
      Queue(mEndpoint.Tick(mNow));
      if (mNow == end && (mComing.empty() || mComing.front().first > mNow)) return hungUp ? -1 : 0;
    }
    if (hungUp) return -1;
    wire::Bytes& bytes = mComing.front().second;
    const std::size_t count = std::min({buffer.size(), bytes.size(), piece});
    std::copy_n(bytes.begin(), count, buffer.begin());
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    if (bytes.empty()) mComing.pop_front();
    return static_cast<int>(count);
  }

  mount::Endpoint mEndpoint;
  wire::Duration mNow = std::chrono::seconds(1000);
  std::deque<std::pair<wire::Duration, wire::Bytes>> mComing;
};

}  // namespace tarnwick::test
