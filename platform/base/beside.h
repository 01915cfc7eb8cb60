// The names that files bear while they are being written, and how a system draws them. For the folder of a
// system's calls.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace tarnwick::files {

/// A name beside `target` that no other file has, for what will take its place.
std::filesystem::path BesideName(const std::filesystem::path& target);
/// Whether `name` is one that `BesideName` gives for a file named `target`.
bool IsBeside(std::string_view name, std::string_view target);

/// 64 bits of the system's randomness.
std::uint64_t RandomNumber();

}  // namespace tarnwick::files
