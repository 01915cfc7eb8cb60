#include "mount/Console.h"

#include <cstdio>

#include "mount/Options.h"

namespace tarnwick::mount {
namespace {

constexpr const char* kOk = "ok\n";
constexpr const char* kEnd = "end\n";
constexpr const char* kBlanks = " \t\r";

std::string Error(std::string_view what) {
  return "error: " + std::string(what) + "\n";
}

std::vector<std::string_view> SplitWords(std::string_view line) {
  std::vector<std::string_view> words;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (line.empty()) return words;
    const std::size_t end = std::min(line.find_first_of(kBlanks), line.size());
    words.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
}

std::string Describe(int address, const Device& device) {
  const Version version = device.ImageVersion();
  char text[160];
  std::snprintf(text, sizeof text, "%d state=%s model=%d revision=%d boot=%d version=%d.%02d complete=%s\n",
                address, std::string(NameOf(device.State())).c_str(), device.Model(), device.Revision(),
                device.BootVersion(), version.major, version.minor, device.Complete() ? "yes" : "no");
  return text;
}

}  // namespace

std::string Console::Execute(std::string_view line) {
  const Words words = SplitWords(line);
  if (words.empty()) return {};
  const std::string_view command = words[0];
  if (command == "state") return State(words);
  if (command == "dump") return Dump(words);
  if (command == "poke") return Poke(words);
  if (command == "line") return SetLine(words);
  if (command == "fault") return Fault(words);
  if (words.size() == 2) return SetLink(words);
  if (words.size() > 1) return Error("not a command");
  if (command == "power") return mFaults.Power(), kOk;
  if (command == "plug") return mFaults.Plug(), kOk;
  mQuit = command == "quit";
  return mQuit ? kOk : Error("not a command");
}

Device* Console::Find(std::string_view address) {
  const std::optional<std::uint32_t> number = ParseNumber(address, 0xFF);
  if (!number) return nullptr;
  const auto device = mMount.Devices().find(static_cast<std::uint8_t>(*number));
  return device == mMount.Devices().end() ? nullptr : &device->second;
}

std::string Console::State(const Words& words) {
  if (words.size() == 1) {
    std::string answer;
    for (const auto& [address, device] : mMount.Devices()) answer += Describe(address, device);
    return answer + kEnd;
  }
  Device* const device = Find(words[1]);
  const std::optional<RunState> state = ParseState(words.back());
  if (words.size() != 3 || device == nullptr || !state) return Error("state [ADDRESS STATE]");
  device->State(*state);
  return kOk;
}

std::string Console::Dump(const Words& words) {
  constexpr std::uint32_t kWordsInLine = 16;
  Device* const device = words.size() > 1 ? Find(words[1]) : nullptr;
  if (device == nullptr || words.size() > 3) return Error("dump ADDRESS [COUNT]");
  const Memory& memory = device->Words();
  const std::optional<std::uint32_t> count =
      words.size() == 3 ? ParseNumber(words[2], memory.ImageWords()) : memory.ImageWords();
  if (!count) return Error("dump ADDRESS [COUNT]");
  std::string answer;
  for (std::uint32_t i = 0; i < *count; ++i) {
    char text[8];
    std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(memory.ImageWord(i)));
    const bool last = i + 1 == *count || i % kWordsInLine == kWordsInLine - 1;
    answer += text;
    answer += last ? '\n' : ' ';
  }
  return answer + kEnd;
}

std::string Console::SetLine(const Words& words) {
  if (words.size() > 2) return Error("line [KEY=VALUE,...]");
  if (words.size() == 2) return ParseLine(words[1], mLine.setup) ? kOk : Error("line [KEY=VALUE,...]");
  return "speed=" + std::to_string(mMount.Speed()) + " " + DescribeLine(mLine.setup) + "\n" + kEnd;
}

std::string Console::Fault(const Words& words) {
  return mFaults.Play(Words(words.begin() + 1, words.end())) ? kOk : Error("fault KIND ...");
}

/// What else is told by one word behind the command.
std::string Console::SetLink(const Words& words) {
  LinkSetup link = mMount.Link();
  const auto set = [&] {
    if (words[0] == "hand-control") return ParseHandControl(words[1], link);
    if (words[0] == "busy") return ParseBusy(words[1], link.busy);
    if (words[0] == "baud") return ParseSpeed(words[1], link.fastest);
    link.first = words[1] == "on";
    return words[0] == "first" && (link.first || words[1] == "off");
  };
  if (!set()) return Error("not a command");
  mMount.Link(link);
  return kOk;
}

std::string Console::Poke(const Words& words) {
  Device* const device = words.size() == 4 ? Find(words[1]) : nullptr;
  if (device == nullptr) return Error("poke ADDRESS WORD VALUE");
  const std::optional<std::uint32_t> index = ParseNumber(words[2], device->Words().ImageWords() - 1);
  const std::optional<std::uint32_t> value = ParseNumber(words[3], 0xFFFF);
  if (!index || !value) return Error("poke ADDRESS WORD VALUE");
  device->Words().ImageWord(*index, static_cast<std::uint16_t>(*value));
  return kOk;
}

}  // namespace tarnwick::mount
