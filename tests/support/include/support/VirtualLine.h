// The link library's core and the simulated mount's core, joined in one process on virtual time.
#pragma once

#include <algorithm>
#include <memory>
#include <set>
#include <string>

#include "linklib/Surroundings.h"
#include "mount/Line.h"
#include "mount/Mount.h"

namespace tarnwick::test {

/// The line, the clock and the opener of the one port "COM5". Time passes only while the library
/// waits. What happens to the bytes on their way is the test's to say, by `line`.
struct VirtualLine : wire::IClock, wire::IPortOpener {
  explicit VirtualLine(mount::Mount& mount) : endpoint(mount) {}
  wire::Duration Now() override { return now; }
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override {
    error = name == "COM5" ? std::error_code() : std::make_error_code(std::errc::no_such_device);
    return error ? nullptr : std::make_unique<Port>(*this);
  }
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override {
    error = there ? Lost() : std::make_error_code(std::errc::no_such_device);
    return error ? nullptr : std::make_unique<Port>(*this);
  }

  mount::Endpoint endpoint;
  mount::Line line{endpoint};
  wire::Duration now = std::chrono::seconds(1000);
  bool hungUp = false;  ///< Each use of the line fails.
  bool there = true;    ///< The adapter is there to be opened again.
  std::set<int> refused;  ///< Speeds that the adapter's driver does not take.

 private:
  std::error_code Lost() const {
    return hungUp ? std::make_error_code(std::errc::io_error) : std::error_code();
  }

  struct Port : serial::ILine {
    explicit Port(VirtualLine& virtualLine) : at(virtualLine) {}
    std::error_code Speed(int to) override {
      if (at.refused.contains(to)) return std::make_error_code(std::errc::not_supported);
      speed = to;
      return at.Lost();
    }
    std::error_code Write(std::span<const std::uint8_t> bytes, wire::Duration) override {
      at.line.Send(bytes, speed, at.now);
      return at.Lost();
    }
    std::size_t Read(std::span<std::uint8_t> buffer, wire::Duration limit, std::error_code& error) override {
      for (const wire::Duration end = at.now + limit; !at.hungUp;
           at.now = std::clamp(at.line.Due().value_or(end), at.now, end)) {
        const wire::Bytes bytes = at.line.Take(speed, at.now);
        arrived.insert(arrived.end(), bytes.begin(), bytes.end());
        if (!arrived.empty() || at.now >= end) break;
      }
      const std::size_t count = std::min(arrived.size(), buffer.size());
      std::copy_n(arrived.begin(), count, buffer.begin());
      arrived.erase(arrived.begin(), arrived.begin() + static_cast<std::ptrdiff_t>(count));
      error = at.Lost();
      return error ? 0 : count;
    }

    VirtualLine& at;
    int speed = wire::kBaseSpeed;
    wire::Bytes arrived;
  };
};

}  // namespace tarnwick::test
