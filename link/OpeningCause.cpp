#include "link/OpeningCause.h"

#include <optional>
#include <system_error>

#include "platform/program.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "ports/ports.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

std::optional<std::filesystem::path> Device(const std::string& port) {
  return ports::DeviceOf(program::This().folder, port);
}

/// With a capital at its begin.
std::string Sentence(const std::string& words) {
  return words.empty() ? words : text::Upper(words.substr(0, 1)) + words.substr(1);
}

/// What keeps a port from being opened at all.
std::string WhyNotOpened(const std::string& note) {
  const std::optional<std::filesystem::path> device = Device(gComPort);
  // Only of a port that is held: others may have a device open that was refused for another reason.
  const std::string busy = std::make_error_code(std::errc::device_or_resource_busy).message();
  const bool held = note.empty() || note.find(busy) != std::string::npos;
  const std::string holder = device && held ? serial::HolderOf(*device) : std::string();
  if (!holder.empty()) return "Another program holds the port: " + holder;
  return Sentence(note);
}

/// What came back from a port that was opened.
std::string WhatCameBack(std::int32_t result) {
  switch (result) {
    case -2:
      return "Not one byte came back: the mount is off, or this is another port or cable";
    case -3:
      return "Bytes came back that no mount sends: another kind of device, or a poor line";
    case -4:
      return "Only our own bytes came back: two adapters joined, or a loop-back plug";
    case -5:
      return "Answers came back, but not to our questions: another kind of device";
    case -6:
      return "The mount speaks another version of the protocol: look for a newer Tarnwick";
    case -7:
      return "The line went while the mount was looked for";
    case -8:
      return "The mount answered, but too seldom: another cable or adapter may help";
    default:
      return {};
  }
}

}  // namespace

std::string PortText(const std::string& port) {
  const std::optional<std::filesystem::path> device = Device(port);
  if (!device) return {};
  std::error_code gone;
  const std::filesystem::path real = std::filesystem::canonical(*device, gone);
  const std::string product = serial::ProductOf(*device);
  return (gone ? *device : real).string() + (product.empty() ? "" : ", " + product);
}

std::string OpeningHint(std::int32_t result, const std::string& note) {
  return result == -1 ? WhyNotOpened(note) : WhatCameBack(result);
}

}  // namespace tarnwick
