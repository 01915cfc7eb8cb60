// The two things that the link library needs of the system: a stream of bytes and a clock. The real
// ones are behind SerialPort.h; tests and campaigns put virtual ones in their place.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace tarnwick::wire {

using Duration = std::chrono::microseconds;

/// An open serial line, held exclusively until its end.
class ISerialPort {
 public:
  virtual ~ISerialPort() = default;
  /// Sets the speed, in bits per second, one of the protocol's. False when the line cannot take it.
  virtual bool Speed(int speed) = 0;
  /// Sends all bytes. False when the line is gone or did not take them within `limit`.
  virtual bool Write(std::span<const std::uint8_t> bytes, Duration limit) = 0;
  /// Waits up to `limit` for bytes. The number put into `buffer`, 0 when none came, -1 when the line
  /// is gone, at once.
  virtual int Read(std::span<std::uint8_t> buffer, Duration limit) = 0;
};

class IPortOpener {
 public:
  virtual ~IPortOpener() = default;
  /// Opens the port of that name raw, at the base speed, with nothing waiting in it. Null when it
  /// cannot be opened, for whatever reason.
  virtual std::unique_ptr<ISerialPort> Open(const std::string& name) = 0;
};

class IClock {
 public:
  virtual ~IClock() = default;
  /// Time since some fixed moment; never goes back.
  virtual Duration Now() = 0;
};

}  // namespace tarnwick::wire
