// The firmware packages of a folder, and the notes beside them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// The endings of packages and of their notes.
inline constexpr std::string_view kPackageEnding = ".qal";
inline constexpr std::string_view kNoteEnding = ".txt";

/// The names of the packages in `folder`, ascending by code point, upper case before lower. A folder
/// that cannot be read holds none.
std::vector<std::string> PackagesIn(const std::filesystem::path& folder);

/// The name, or the path, of a package without its extension. It must have one, as all of `PackagesIn` have.
std::string PackageStem(const std::string& package);

/// The package of that name without extension, whatever the case of its letters; of several the one that
/// is spelt so, else the first. An empty path when there is none.
std::filesystem::path FindPackage(const std::filesystem::path& folder, const std::string& name);

/// The note that belongs to a package, there or not. The package must have an extension.
std::filesystem::path NoteOf(const std::filesystem::path& package);

/// The lines of a note, each ended by CR LF. None where there is no note, or it cannot be read.
std::optional<std::string> ReadNote(const std::filesystem::path& note);

}  // namespace tarnwick
