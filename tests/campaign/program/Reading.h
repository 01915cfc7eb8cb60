// How an owner reads what the program writes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::campaign {

/// The motors, as the program names them, and their bus addresses.
inline const std::map<std::string, std::int32_t> kMotors = {{"AZM(RA) Motor", 16}, {"ALT(DEC) Motor", 17}};

inline bool Says(std::string_view text, std::string_view words) {
  return text.find(words) != std::string_view::npos;
}

/// The number behind `words`; 0 when they are not there.
inline std::int32_t NumberBehind(std::string_view text, std::string_view words) {
  const std::size_t at = text.find(words);
  return at == std::string_view::npos ? 0 : std::atoi(std::string(text.substr(at + words.size())).c_str());
}

inline std::vector<std::string> LinesOf(const std::string& text) {
  std::istringstream all(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(all, line);) lines.push_back(line);
  return lines;
}

/// What a status report says of a motor, such as its "State"; empty when nothing.
inline std::string Reported(const std::vector<std::string>& lines, const std::string& motor,
                            const std::string& what) {
  auto at = std::find(lines.begin(), lines.end(), "Device: " + motor);
  const std::string wanted = "    " + what + ": ";
  at = std::find_if(at, lines.end(), [&](const std::string& line) { return line.starts_with(wanted); });
  return at == lines.end() ? "" : at->substr(wanted.size());
}

/// The package that a note of an unfinished run names.
inline std::string PackageNamed(std::string_view note) {
  const std::size_t end = note.find(".qal"), begin = note.rfind(' ', end) + 1;
  return std::string(note.substr(begin, end - begin));
}

}  // namespace tarnwick::campaign
