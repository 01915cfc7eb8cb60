#include "platform/modDebug.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/clock.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

constexpr const char* kFileName = "debugexe.txt";

std::string TimeStamp() {
  const std::tm now = clock::LocalNow();
  std::array<char, 32> digits{};
  const std::size_t length = std::strftime(digits.data(), digits.size(), "%Y%m%d%H%M%S", &now);
  return {digits.data(), length};
}

}  // namespace

files::Stream gDebugFile;
bool gDebugOn = false;

void OpenDebugLog() {
  gDebugFile.reset();
  std::error_code error;
  if (!std::filesystem::is_directory(kFileName, error)) std::filesystem::remove(kFileName, error);
  // Made anew: what could not be deleted may be a link to a file of someone else's.
  gDebugFile = files::CreateToWrite(kFileName);
  // Unbuffered: each line reaches the file whole and by itself, also when the program ends at once.
  if (gDebugFile) std::setvbuf(gDebugFile.get(), nullptr, _IONBF, 0);
  gDebugOn = false;
}

void CloseDebugLog() {
  gDebugFile.reset();
}

void DebugLog(std::string_view text) {
  if (!gDebugOn || !gDebugFile) return;
  const std::string line = TimeStamp().append(": ").append(text).append(text::kLineEnd);
  std::fwrite(line.data(), 1, line.size(), gDebugFile.get());
}

void SetDebugEnabled(bool on) {
  gDebugOn = on;
}
bool DebugEnabled() {
  return gDebugOn;
}

}  // namespace tarnwick
