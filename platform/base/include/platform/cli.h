// What every program of ours answers at the command line.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick::cli {

/// Answers "--help" and "--version", where one of them is the only word behind the program's name, on standard
/// output: with `help`, or with `name` and the version. The exit status then, 0 unless it could not be written;
/// nothing for any other words.
std::optional<int> AnswerCommonWords(std::span<char* const> words, std::string_view name, std::string_view help);

/// The largest package that a command line takes from standard input, in bytes; the largest that a site can give.
inline constexpr std::size_t kLargestInput = 64u << 20;
/// Standard input to its end; empty when it is longer than that.
std::string ReadInput();

}  // namespace tarnwick::cli
