// The serial ports of the system: which devices are there, and one of them as an open line.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <system_error>

namespace tarnwick::serial {

using Duration = std::chrono::microseconds;

/// Where the system tells of its devices and where it has them; a test puts folders of its own there.
struct System {
  std::filesystem::path terminals = "/sys/class/tty";  ///< An entry for each device, under its name.
  std::filesystem::path devices = "/dev";              ///< The devices under the same names.
};

/// What tells a USB adapter from all others, whatever name the system gives it when it is plugged in again.
struct Adapter {
  std::string product;  ///< Numbers of maker and product, and the product's name.
  std::string port;     ///< Which of an adapter's lines it is; most have one.
  std::string serial;   ///< Serial number; empty where it has none, or shares it with another one here.
  std::string place;    ///< Where it is plugged in: its place in the USB tree.

  /// True when both are the same adapter: by the serial number or, without one, by the place.
  bool SameAs(const Adapter& other) const;
};

/// What the system tells of the adapter behind `device`; none where it is no USB adapter or not there.
std::optional<Adapter> AdapterOf(const std::filesystem::path& device, const System& system = {});

/// The device that is that adapter now; empty when it is not there, or when several could be it.
std::filesystem::path FindAdapter(const Adapter& adapter, const System& system = {});

/// The device that the system has under a number of the list of ports, there or not; `number` is from 1
/// to 16.
std::filesystem::path StandardDevice(int number);

/// True when `device`, with links followed, is a serial port that is there. No port is opened for use. One
/// that the system offers without hardware behind it does not exist.
bool IsPort(const std::filesystem::path& device);

/// What the system knows of the product behind `device`, such as "USB-Serial Controller"; empty when it
/// knows nothing.
std::string ProductOf(const std::filesystem::path& device);

/// True when `device` hangs on the computer's USB, so that it can have been plugged in for the mount.
bool IsUsb(const std::filesystem::path& device);

/// The name of a program of this user, or one that this user may look at, that has `device` open; empty
/// where the system tells of none. This process does not count.
std::string HolderOf(const std::filesystem::path& device);

/// Whether the user of this process may open a device.
struct Access {
  bool allowed = true;  ///< True as well where there is no device.
  std::string group;    ///< Whose members may, where this user may not; empty when no group may.
};
Access AccessTo(const std::filesystem::path& device);

/// An open serial line, held exclusively until its end. A call that fails says why; the line is gone then,
/// and each further call fails too, but for `Speed`.
class ILine {
 public:
  virtual ~ILine() = default;
  /// Sets the speed, in bits per second. An error when the line cannot take it, or takes another; it then
  /// stays at the speed that it had.
  virtual std::error_code Speed(int speed) = 0;
  /// Sends all bytes. An error when the line is gone, or did not take them within `limit`.
  virtual std::error_code Write(std::span<const std::uint8_t> bytes, Duration limit) = 0;
  /// Waits up to `limit` for bytes. The number put into `buffer`, 0 when none came or, at once and with
  /// `error` set, when the line is gone.
  virtual std::size_t Read(std::span<std::uint8_t> buffer, Duration limit, std::error_code& error) = 0;
};

/// Opens `device` raw, without parity or flow control, at `speed` bits per second and with nothing waiting in
/// it; asks its driver, where it can, to hand on at once what comes in. What was set before is put back at
/// the end. Null, and the cause in `error`, where that cannot be done: a device that another program holds is
/// `device_or_resource_busy`, one that is no terminal `inappropriate_io_control_operation`.
std::unique_ptr<ILine> Open(const std::filesystem::path& device, int speed, std::error_code& error,
                            const System& system = {});

}  // namespace tarnwick::serial
