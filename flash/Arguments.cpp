#include "flash/Arguments.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace tarnwick::flash {
namespace {

/// The bus addresses of the two motors.
constexpr std::int32_t kAzimuth = 16;
constexpr std::int32_t kAltitude = 17;

struct CommandName {
  Command command;
  std::string_view name;
  std::size_t least, most;  ///< How many operands it takes.
};

constexpr std::array kCommands = std::to_array<CommandName>({
    {Command::Ports, "ports", 0, 0},
    {Command::Status, "status", 0, 0},
    {Command::Check, "check", 1, 1},
    {Command::Program, "program", 1, 1},
    {Command::Verify, "verify", 1, 1},
    {Command::Fetch, "fetch", 0, 1},
    {Command::List, "list", 0, 0},
    {Command::Forget, "forget", 0, 0},
});

/// What is asked but once or twice.
constexpr int kAlways = 100;

// What fails again and again does not succeed by one more Yes: the last three have their bounds.
constexpr std::array kQuestions = std::to_array<Question>({
    {"model", "model can not be determined",
     "the package is for this mount, though no device tells its model", kAlways},
    {"boot-loader", "BootLoader on this device needs to be upgraded", "renew a boot loader that is outdated",
     kAlways},
    {"altered", "The signature of this package does not fit", "use a package whose signature does not fit",
     kAlways},
    {"restart", "Would you like to Restart Programming",
     "write a device from its beginning after a failed block; 5 times", 5},
    {"retry", "Error Verifying Data at Address", "read a word once more; 5 times", 5},
    {"again", "Begin programming again", "begin once more after a run that was stopped; 3 times", 3},
});

/// The value of "--name=value" or of "--name" "value"; nothing when `words` does not begin with that option.
/// Takes what it read off `words`.
std::optional<std::string> TakeOption(std::span<char* const>& words, std::string_view name) {
  const std::string_view word = words.front();
  if (!word.starts_with(name)) return std::nullopt;
  if (word.size() == name.size()) {
    if (words.size() < 2) return std::nullopt;
    const std::string value = words[1];
    words = words.subspan(2);
    return value;
  }
  if (word[name.size()] != '=') return std::nullopt;
  words = words.subspan(1);
  return std::string(word.substr(name.size() + 1));
}

/// Takes the names of a list with commas; false when one is no question's.
bool TakeYes(const std::string& list, std::set<std::string>& yes) {
  for (const std::string_view name : text::Split(list, ',')) {
    const auto isIt = [name](const Question& each) { return each.name == name; };
    if (std::none_of(kQuestions.begin(), kQuestions.end(), isIt)) return false;
    yes.emplace(name);
  }
  return true;
}

bool TakeDevice(const std::string& name, std::int32_t& address) {
  if (name != "azm" && name != "alt" && name != "all") return false;
  address = name == "azm" ? kAzimuth : name == "alt" ? kAltitude : 0;
  return true;
}

/// Takes one option off `words`. False when it is none, or its value makes no sense.
bool TakeAnyOption(std::span<char* const>& words, Arguments& arguments) {
  if (std::string_view(words.front()) == "--json") {
    words = words.subspan(1);
    return arguments.json = true;
  }
  if (const auto port = TakeOption(words, "--port")) return arguments.port = *port, !port->empty();
  if (const auto device = TakeOption(words, "--device")) return TakeDevice(*device, arguments.address);
  if (const auto yes = TakeOption(words, "--yes")) return TakeYes(*yes, arguments.yes);
  return false;
}

std::string NamesOfQuestions() {
  std::string names;
  for (const Question& each : kQuestions) names.append(names.empty() ? "" : ", ").append(each.name);
  return names;
}

}  // namespace

std::span<const Question> Questions() {
  return kQuestions;
}

const Question* QuestionOf(std::string_view shown) {
  const auto found = std::find_if(kQuestions.begin(), kQuestions.end(), [shown](const Question& each) {
    return shown.find(each.words) != std::string_view::npos;
  });
  return found == kQuestions.end() ? nullptr : &*found;
}

std::optional<Arguments> ReadArguments(std::span<char* const> words, std::string& wrong) {
  Arguments arguments;
  const CommandName* command = nullptr;
  std::size_t operands = 0;
  bool optionsEnded = false;
  while (!words.empty()) {
    const std::string word = words.front();
    const auto named = std::find_if(kCommands.begin(), kCommands.end(),
                                    [&word](const CommandName& each) { return each.name == word; });
    if (command == nullptr && named != kCommands.end()) {
      command = &*named;
    } else if (word == "--" && !optionsEnded) {
      optionsEnded = true;
    } else if (word.starts_with("--") && !optionsEnded) {
      if (TakeAnyOption(words, arguments)) continue;
      wrong = "\"" + word + "\" is no option, or its value makes no sense. --yes takes " +
              NamesOfQuestions() + ".";
      return std::nullopt;
    } else if (command == nullptr) {
      wrong = "\"" + word + "\" is no command.";
      return std::nullopt;
    } else {
      arguments.operand = word;
      ++operands;
    }
    words = words.subspan(1);
  }
  if (command == nullptr) {
    wrong = "A command is missing.";
  } else if (operands < command->least || operands > command->most) {
    wrong = std::string(command->name) + (command->most == 0 ? " takes nothing more." : " takes one name.");
  } else {
    arguments.command = command->command;
    return arguments;
  }
  return std::nullopt;
}

std::string HelpText() {
  std::string help =
      "tarnwick-flash writes firmware into telescope mounts from a terminal.\n\n"
      "  tarnwick-flash ports                the serial ports and what hangs on them\n"
      "  tarnwick-flash status               what the mount on the port tells of itself\n"
      "  tarnwick-flash check PACKAGE        whether a package is for that mount\n"
      "  tarnwick-flash program PACKAGE      writes a package into the mount\n"
      "  tarnwick-flash verify PACKAGE       compares the mount with a package\n"
      "  tarnwick-flash list                 the packages here and on the update site\n"
      "  tarnwick-flash fetch [NAME]         fetches a package, or all that are not here\n"
      "  tarnwick-flash forget               throws away the note of a run that was not ended\n\n"
      "PACKAGE is a file, a name of the list, or \"-\" for standard input.\n\n"
      "  --port COMn|DEVICE     the port; else the one that was used last, or the only USB adapter\n"
      "  --device azm|alt|all   which motors; all by default\n"
      "  --json                 one JSON document, or one object a line while it works\n"
      "  --yes=NAME[,NAME]      answers these questions with Yes, and no other:\n";
  for (const Question& each : kQuestions) {
    help.append("                           ").append(each.name).append(11 - each.name.size(), ' ');
    help.append("  ").append(each.about).append("\n");
  }
  help +=
      "\nCtrl-C asks before it stops a run. SIGTERM stops it at the next block, without a question. A "
      "terminal\n"
      "that goes away stops nothing.\n\n"
      "Exit status: 0 done; 1 refused before anything was touched; 2 wrong use; 3 the contents differ;\n"
      "4 stopped, and a device needs another run; 5 the line failed; 6 the update site failed.\n";
  return help;
}

}  // namespace tarnwick::flash
