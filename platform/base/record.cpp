#include "platform/record.h"

#include <array>
#include <ctime>
#include <exception>

#include "platform/clock.h"
#include "platform/codepage.h"
#include "platform/files.h"

namespace tarnwick::record {
namespace {

constexpr const char* kFileName = "Tarnwick.log";
constexpr const char* kOldFileName = "Tarnwick.old.log";
constexpr std::string_view kEllipsis = "...";
/// Bytes of a part that are kept to be copied.
constexpr std::size_t kLargestPart = 256u << 10;

std::filesystem::path gFolder;  ///< Empty while the record is closed.
bool gInPart = false;
std::string gPart;

std::string TimeStamp() {
  const std::tm now = clock::LocalNow();
  std::array<char, 32> digits{};
  const std::size_t length = std::strftime(digits.data(), digits.size(), "%Y-%m-%d %H:%M:%S ", &now);
  return {digits.data(), length};
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// `text` as one line of print.
std::string OneLine(std::string_view text) {
  std::string line;
  for (const char c : text.substr(0, kLongestLine)) {
    if (c == '\r') continue;
    if (c == '\n') {
      line += " | ";
    } else {
      line += IsControl(c) ? '?' : c;
    }
  }
  while (line.ends_with(" | ")) line.resize(line.size() - 3);
  if (text.size() > kLongestLine) line += kEllipsis;
  return text::IsUtf8(line) ? line : text::ToUtf8(line);
}

/// Makes room for so many bytes: the file that would grow too large becomes the old one.
void MakeRoom(const std::filesystem::path& file, std::size_t bytes) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (!error && size + bytes > kLargest) std::filesystem::rename(file, gFolder / kOldFileName, error);
}

void Write(std::string_view text) {
  const std::string line = TimeStamp().append(OneLine(text)).append("\n");
  if (gInPart && gPart.size() + line.size() <= kLargestPart) gPart += line;
  const std::filesystem::path file = gFolder / kFileName;
  MakeRoom(file, line.size());
  files::Append(file, line);
}

}  // namespace

void Open(const std::filesystem::path& folder) {
  gFolder = folder;
  gPart.clear();
  gInPart = true;
}

void Close() {
  gFolder.clear();
}

void Line(std::string_view text) {
  if (gFolder.empty()) return;
  try {
    Write(text);
  } catch (...) {  // NOLINT(bugprone-empty-catch): without memory there is no line
  }
}

void Failure(std::string_view what, std::string_view cause) {
  Line(std::string("failed: ").append(what).append(": ").append(cause));
}

void Failure(std::string_view what, const std::error_code& cause) {
  Failure(what, std::string_view(cause.message()));
}

void Caught() noexcept {
  try {
    throw;
  } catch (const std::exception& caught) {
    try {
      Failure("contained", caught.what());
    } catch (...) {  // NOLINT(bugprone-empty-catch): without memory there is no line
    }
  } catch (...) {
    Line("failed: contained: an unknown failure");
  }
}

Part::Part() {
  gPart.clear();
  gInPart = true;
}

Part::~Part() {
  gInPart = false;
}

std::string LastPart() {
  return gPart;
}

}  // namespace tarnwick::record
