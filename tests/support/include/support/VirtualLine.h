// The link library's core and the simulated mount's core, joined in one process on virtual time.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "linklib/Surroundings.h"
#include "mount/Line.h"
#include "mount/Mount.h"

namespace tarnwick::test {

/// The line, the clock and the opener of the one port "COM5". Time passes only while the library
/// waits. What happens to the bytes on their way is the test's to say, by `line`.
struct VirtualLine : wire::IClock, wire::IPortOpener {
  explicit VirtualLine(mount::Mount& mount) : mOwn(std::in_place, mount), line(*mOwn) {}
  wire::Duration Now() override { return now; }
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override {
    error = name == "COM5" ? Connect(false) : std::make_error_code(std::errc::no_such_device);
    return error ? nullptr : std::make_unique<Port>(*this);
  }
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override {
    error = there && !hungUp ? Connect(true) : std::make_error_code(std::errc::no_such_device);
    return error ? nullptr : std::make_unique<Port>(*this);
  }

 protected:
  /// The mount's end of the line is `other`.
  explicit VirtualLine(mount::Endpoint& other) : line(other) {}
  virtual std::error_code Connect(bool /*again*/) { return {}; }
  virtual std::error_code Change(int /*speed*/) { return {}; }
  /// Until `moment`, or less.
  virtual void Wait(wire::Duration moment) { now = moment; }

 private:
  std::optional<mount::Endpoint> mOwn;

 public:
  mount::Line line;
  wire::Duration now = std::chrono::seconds(1000);
  bool hungUp = false;    ///< Whatever uses the line fails, and from then on all that was open.
  bool there = true;      ///< The adapter is there to be opened again.
  std::set<int> refused;  ///< Speeds that the adapter's driver does not take.

 private:
  struct Port : serial::ILine {
    explicit Port(VirtualLine& virtualLine) : at(virtualLine) {}
    std::error_code Used() {
      gone = gone || at.hungUp;
      return gone ? std::make_error_code(std::errc::io_error) : std::error_code();
    }
    std::error_code Speed(int to) override {
      if (at.refused.contains(to)) return std::make_error_code(std::errc::not_supported);
      if (const std::error_code error = at.Change(to)) return error;
      speed = to;
      return Used();
    }
    std::error_code Write(std::span<const std::uint8_t> bytes, wire::Duration) override {
      if (!gone) at.line.Send(bytes, speed, at.Now());
      return Used();
    }
    std::size_t Read(std::span<std::uint8_t> buffer, wire::Duration limit, std::error_code& error) override {
      for (const wire::Duration end = at.Now() + limit; !(error = Used());
           at.Wait(std::clamp(at.line.Due().value_or(end), at.now, end))) {
        const wire::Bytes bytes = at.line.Take(speed, at.Now());
        arrived.insert(arrived.end(), bytes.begin(), bytes.end());
        if (!arrived.empty() || at.now >= end) break;
      }
      if ((error = Used())) return 0;
      const std::size_t count = std::min(arrived.size(), buffer.size());
      std::copy_n(arrived.begin(), count, buffer.begin());
      arrived.erase(arrived.begin(), arrived.begin() + static_cast<std::ptrdiff_t>(count));
      return count;
    }

    VirtualLine& at;
    bool gone = false;
    int speed = wire::kBaseSpeed;
    wire::Bytes arrived;
  };
};

}  // namespace tarnwick::test
