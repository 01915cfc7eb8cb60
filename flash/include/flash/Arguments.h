// The command line of tarnwick-flash.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick::flash {

enum class Command { Ports, Status, Check, Program, Verify, Fetch, List, Forget };

struct Arguments {
  Command command = Command::Ports;
  std::string operand;       ///< The package, or the name of what is fetched; empty for none.
  std::string port;          ///< COM1 to COM16 or the path of a device; empty for the settings' own.
  std::int32_t address = 0;  ///< Bus address of the one device chosen; 0 for all.
  bool json = false;
  std::set<std::string> yes;  ///< Names of the questions that are answered with Yes.
};

/// A question of the program that the command line can answer.
struct Question {
  std::string_view name;   ///< As --yes= has it.
  std::string_view words;  ///< Words of the question's text that no other message has.
  std::string_view about;  ///< What a Yes means, for --help.
  int most;                ///< How often the command line answers it in one run of the program.
};

/// All of them.
std::span<const Question> Questions();

/// The question that was shown; null for a message that is none of them.
const Question* QuestionOf(std::string_view shown);

/// What the arguments say, without the program's name. Nothing for wrong use; `wrong` then says what is
/// wrong, in one sentence.
std::optional<Arguments> ReadArguments(std::span<char* const> words, std::string& wrong);

/// What --help prints.
std::string HelpText();

}  // namespace tarnwick::flash
