// Which names from the network may become names of files.
#pragma once

#include <string_view>

namespace tarnwick {

/// True for a name that is one path component, the same on every file system, and harmless in a script:
/// no separators, wildcards, quotes, percent signs or control characters, no leading full stop, no blank
/// or full stop at the end, no name of a device, 1 to 200 bytes. Inner blanks and brackets are fine.
bool IsHarmlessName(std::string_view name);

}  // namespace tarnwick
