#include "platform/cli.h"

#include <cstdio>
#include <string>

#include "platform/program.h"

namespace tarnwick::cli {

std::optional<int> AnswerCommonWords(std::span<char* const> words, std::string_view name,
                                     std::string_view help) {
  if (words.size() != 1) return std::nullopt;
  const std::string_view word = words.front();
  if (word != "--help" && word != "--version") return std::nullopt;
  std::string told(help);
  if (word == "--version") told = std::string(name) + " " + program::VersionText() + "\n";
  std::fwrite(told.data(), 1, told.size(), stdout);
  return std::fflush(stdout) == 0 ? 0 : 2;
}

std::string ReadInput() {
  std::string content;
  char piece[4096];
  for (std::size_t count = 1; count != 0 && content.size() <= kLargestInput;) {
    count = std::fread(piece, 1, sizeof piece, stdin);
    content.append(piece, count);
  }
  return content.size() <= kLargestInput ? content : std::string();
}

}  // namespace tarnwick::cli
