// The command line of tarnwick-mount.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mount/Mount.h"

namespace tarnwick::mount {

struct Options {
  std::filesystem::path link;  ///< Where to put a link to the terminal; empty for nowhere.
  LinkSetup path;
  std::map<std::uint8_t, DeviceSetup> devices;
  bool untilEof = false;  ///< End when standard input does.
  bool help = false;
};

/// What the options are, for `--help`.
std::string_view Usage();

/// Reads the command line without the program's name. Nothing, and the reason in `error`, when it
/// cannot be understood.
std::optional<Options> ParseOptions(const std::vector<std::string>& arguments, std::string& error);

/// The run state of that name: running, boot, program, silent.
std::optional<RunState> ParseState(std::string_view text);
std::string_view NameOf(RunState state);

/// A whole number from 0 to `most`, in decimal, or hexadecimal behind "0x"; nothing else in `text`.
std::optional<std::uint32_t> ParseNumber(std::string_view text, std::uint32_t most);

}  // namespace tarnwick::mount
