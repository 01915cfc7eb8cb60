// What every program of ours answers at the command line.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace tarnwick::cli {

/// Answers "--help" and "--version", where one of them is the only word behind the program's name, on standard
/// output: with `help`, or with `name` and the version. The exit status then, 0 unless it could not be written;
/// nothing for any other words.
std::optional<int> AnswerCommonWords(std::span<char* const> words, std::string_view name, std::string_view help);

}  // namespace tarnwick::cli
