// The command line of tarnwick-mount.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mount/Line.h"
#include "mount/Mount.h"

namespace tarnwick::mount {

struct Options {
  std::filesystem::path link;  ///< Where to put a link to the terminal; empty for nowhere.
  LinkSetup path;
  LineSetup line;
  std::map<std::uint8_t, DeviceSetup> devices;
  std::vector<std::string> faults;  ///< As `Faults::Play` takes them, in their order.
  bool untilEof = false;            ///< End when standard input does.
};

/// What the options are, for `--help`.
std::string_view Usage();

/// Reads the command line without the program's name. Nothing, and the reason in `error`, when it
/// cannot be understood.
std::optional<Options> ParseOptions(const std::vector<std::string>& arguments, std::string& error);

/// The run state of that name: running, boot, program, silent.
std::optional<RunState> ParseState(std::string_view text);
std::string_view NameOf(RunState state);

/// Sets what the line runs through: direct, real, old or virtual; false when it is none of them.
bool ParseHandControl(std::string_view text, LinkSetup& link);

/// Sets a speed of the line; false when it is none.
bool ParseSpeed(std::string_view text, int& speed);

/// Sets what `text` names, as "key=value,key=value"; false, with some set, when it cannot be understood.
bool ParseLine(std::string_view text, LineSetup& line);
/// Sets how long the mount takes, in the same form.
bool ParseBusy(std::string_view text, Busy& busy);
/// The line for reading, all keys in a line.
std::string DescribeLine(const LineSetup& line);

/// A whole number from 0 to `most`, in decimal, or hexadecimal behind "0x"; nothing else in `text`.
std::optional<std::uint32_t> ParseNumber(std::string_view text, std::uint32_t most);

}  // namespace tarnwick::mount
