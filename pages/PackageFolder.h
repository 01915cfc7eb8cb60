// The firmware packages of a folder, and the notes beside them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarnwick {

/// The names of the packages in `folder`, ascending by code point, upper case before lower. A folder
/// that cannot be read holds none.
std::vector<std::string> PackagesIn(const std::filesystem::path& folder);

/// The note that belongs to a package, there or not.
std::filesystem::path NoteOf(const std::filesystem::path& package);

/// The lines of a note, each ended by CR LF. Empty when the note cannot be read.
std::string ReadNote(const std::filesystem::path& note);

}  // namespace tarnwick
