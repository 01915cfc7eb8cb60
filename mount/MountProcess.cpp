#include "mount/MountProcess.h"

#include <sstream>

namespace tarnwick::mount {
namespace {

constexpr std::chrono::milliseconds kPatience(5000);

}  // namespace

bool MountProcess::Start(const std::filesystem::path& program, const std::filesystem::path& link,
                         std::vector<std::string> options) {
  Stop();
  std::error_code error;
  std::filesystem::create_directories(link.parent_path(), error);
  options.insert(options.begin(), {program, "--link", link, "--until-eof"});
  if (mChild.Start(options)) return false;
  constexpr std::string_view kReady = "ready ";
  const std::string line = Line();
  if (!line.starts_with(kReady)) return false;
  mDevice = line.substr(kReady.size(), line.size() - kReady.size() - 1);
  return true;
}

int MountProcess::Stop() {
  mArrived.clear();
  return mChild.Stop();
}

std::string MountProcess::Line() {
  std::size_t end = 0;
  while ((end = mArrived.find('\n')) == std::string::npos) {
    if (!mChild.Receive(mArrived, kPatience)) return {};
  }
  const std::string line = mArrived.substr(0, end + 1);
  mArrived.erase(0, end + 1);
  return line;
}

std::string MountProcess::Ask(const std::string& command) {
  if (!mChild.Send(command + "\n")) return {};
  std::string answer;
  for (std::string next = Line(); !next.empty(); next = Line()) {
    answer += next;
    if (next == "ok\n" || next == "end\n" || next.starts_with("error: ")) return answer;
  }
  return {};
}

void MountProcess::State(std::int32_t address, std::string_view state) {
  Ask("state " + std::to_string(address) + " " + std::string(state));
}

void MountProcess::Poke(std::int32_t address, std::int32_t word, std::int32_t value) {
  Ask("poke " + std::to_string(address) + " " + std::to_string(word) + " " + std::to_string(value));
}

std::vector<std::int32_t> MountProcess::Dump(std::int32_t address) {
  constexpr std::string_view kEnd = "end\n";
  const std::string answer = Ask("dump " + std::to_string(address));
  std::vector<std::int32_t> words;
  if (!answer.ends_with(kEnd)) return words;
  std::istringstream listed(answer.substr(0, answer.size() - kEnd.size()));
  for (std::int32_t word = 0; listed >> std::hex >> word;) words.push_back(word);
  return words;
}

}  // namespace tarnwick::mount
