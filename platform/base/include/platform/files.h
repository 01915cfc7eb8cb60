// Files read and written whole. A file is replaced by writing beside it, flushing and renaming, so
// that at each moment either the old or the new contents stand under its name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick::files {

/// True when something of that name is there and can be reached. Never fails.
bool FileExists(const std::filesystem::path& path);

/// The whole file, or nothing when it cannot be opened or read, is no ordinary file, memory for it
/// cannot be had, or it is larger than `limit` bytes.
std::optional<std::string> ReadWhole(const std::filesystem::path& path, std::uintmax_t limit = UINTMAX_MAX);

/// Puts `content` under `path` atomically and durably. On an error the old file stays as it was and
/// nothing is left beside it. A program killed meanwhile can leave its half under the name with ".new"
/// behind it, which the next call makes anew. A link is followed to the file that it names. Only an
/// ordinary file is replaced: a folder or a device under that name is an error.
std::error_code Replace(const std::filesystem::path& path, std::string_view content);

}  // namespace tarnwick::files
