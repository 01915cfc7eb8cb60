// Short ways to write package texts and to look at what a load left.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "firmware/QALclass.h"

namespace tarnwick::test {

/// The lines, each ended by CR LF.
inline std::string Lines(std::initializer_list<std::string_view> lines) {
  std::string text;
  for (const std::string_view line : lines) text.append(line).append("\r\n");
  return text;
}

inline QALclass Loaded(std::string_view text) {
  QALclass package;
  package.LoadQALfile({}, text);
  return package;
}

inline QALclass Loaded(std::initializer_list<std::string_view> lines) {
  return Loaded(Lines(lines));
}

/// "0 1234" for word 0 of high byte 0x12 and low byte 0x34, with "*" behind a padded word and "-"
/// for one without a value.
inline std::string WordText(const QALclass& package, std::int32_t device, std::int32_t word) {
  const auto high = package.DeviceHiByte(device, word);
  const auto low = package.DeviceLoByte(device, word);
  if (!high || !low) return high || low ? "half" : "-";
  char text[8];
  std::snprintf(text, sizeof text, "%02X%02X", *high, *low);
  return std::string(text) + (package.DeviceNullPadded(device, word) ? "*" : "");
}

/// The whole image, words separated by blanks.
inline std::string ImageText(const QALclass& package, std::int32_t device) {
  std::string text;
  for (std::int32_t word = 0; word <= package.DeviceWords(device); ++word) {
    text += (word == 0 ? "" : " ") + WordText(package, device, word);
  }
  return text;
}

/// "0" for a good load, else "number : message at line".
inline std::string Outcome(const QALclass& package) {
  if (!package.ErrorsFound()) return "0" + package.LastErrorMessage();
  return std::to_string(package.LastError()) + " : " + package.LastErrorMessage() + " at " +
         std::to_string(package.LastErrorLine());
}

}  // namespace tarnwick::test
