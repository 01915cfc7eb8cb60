// Makes a firmware package from the hex files of a compiler. docs/package-format.md tells the options.
//
// Exit status: 0 when the package was written, 1 with a message where it cannot be made, 2 for wrong use.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

#include "Maker.h"
#include "platform/cli.h"
#include "platform/codepage.h"
#include "platform/contain.h"
#include "platform/files.h"
#include "platform/text.h"

namespace {

using namespace tarnwick;
using namespace tarnwick::qalmake;

constexpr int kFaults = 1;
constexpr int kWrongUse = 2;
constexpr std::uintmax_t kLargestHex = 64u << 20;
constexpr const char* kUsage =
    "Usage: qalmake --model N --version V [OPTION ...] PACKAGE HEX\n"
    "  or:  qalmake --model N --version V[,V] [OPTION ...] PACKAGE HEX HEX\n\n"
    "Makes a firmware package from hex files, reads it back and compares it word by word.\n\n"
    "  PACKAGE              the package that is written; its name ends in .qal\n"
    "  HEX                  an Intel HEX file: for both motors, or one for each\n"
    "  --model N            number of the telescope's model\n"
    "  --version V          of the firmware, as 5.14; two where the files' differ\n"
    "  --name TEXT          name of the model\n"
    "  --hwrev LIST         hardware revisions that it fits, as 5,6; none when left out\n"
    "  --date YYYY.MM.DD    today when left out\n"
    "  --comments TEXT      shown to the owner\n"
    "  --device NAME,ADDR   in place of AZM MOTOR,16 and ALT MOTOR,17; as often as there are devices\n"
    "  --record-id TEXT     begin of the record ids; FW_ when left out\n"
    "  --leave-out A-B      words that are not for the package, as 0x2000-0x2007; may come again\n";

using Arguments = std::span<char*>;

/// Says what is wrong, and is false.
bool Wrong(const std::string& what) {
  std::fprintf(stderr, "qalmake: %s\n", what.c_str());
  return false;
}

/// A UTF-8 text of the command line in Windows-1252; none where that cannot tell it.
std::optional<std::string> Narrow(std::string_view text) {
  std::string narrow;
  if (!text::IsUtf8(text)) return std::nullopt;
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    std::uint32_t character = first < 0x80 ? first : first & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) character = character << 6 | (text[i] & 0x3Fu);
    const char byte = character > 0xFFFF ? '?' : text::FromUnicode(static_cast<char16_t>(character));
    if ((byte == '?' && character != '?') || text::IsControl(byte)) return std::nullopt;
    narrow += byte;
    text.remove_prefix(length);
  }
  return narrow;
}

/// A whole number, in hexadecimal digits behind "0x".
std::optional<std::uint32_t> Number(std::string_view text) {
  const int base = text.starts_with("0x") || text.starts_with("0X") ? 16 : 10;
  if (base == 16) text.remove_prefix(2);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// The four digits of a version that is written as 5.14.
std::optional<std::string> VersionDigits(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == text.npos || point < 1 || point > 2 || text.size() != point + 3) return std::nullopt;
  const std::string digits =
      (point == 1 ? "0" : "") + std::string(text.substr(0, point)) + std::string(text.substr(point + 1));
  if (digits.find_first_not_of("0123456789") != digits.npos) return std::nullopt;
  return digits;
}

std::string Today() {
  const std::chrono::year_month_day day(
      std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
  char text[32];
  std::snprintf(text, sizeof text, "%d.%02u.%02u", int(day.year()), unsigned(day.month()),
                unsigned(day.day()));
  return text;
}

/// What the options say, before the files are read.
struct Options {
  Wish wish{.fileName = {},
            .date = Today(),
            .comments = {},
            .model = 0,
            .modelName = {},
            .hwRev = {},
            .recordId = "FW_",
            .leaveOut = {},
            .parts = {}};
  std::vector<std::string> versions;
  std::vector<std::string> devices;
};

bool TakeRange(std::string_view value, Options& options) {
  const std::size_t dash = value.find('-');
  const auto first = Number(value.substr(0, dash));
  const auto last = dash == value.npos ? first : Number(value.substr(dash + 1));
  if (!first || !last || *last < *first) return Wrong("--leave-out wants FIRST-LAST");
  options.wish.leaveOut.emplace_back(*first, *last);
  return true;
}

bool TakeDevice(const std::string& value, Options& options) {
  const std::size_t comma = value.find(',');
  const auto address = comma == value.npos ? std::nullopt : Number(text::Trim(value.substr(comma + 1)));
  if (!address) return Wrong("--device wants NAME,ADDRESS");
  options.devices.push_back(std::string(text::Trim(value.substr(0, comma))) + ", " +
                            std::to_string(*address));
  return true;
}

bool TakeOption(std::string_view option, const char* given, Options& options) {
  const auto value = Narrow(given);
  if (!value)
    return Wrong("\"" + std::string(given) + "\" cannot be told: a package is text in Windows-1252");
  Wish& wish = options.wish;
  const std::pair<std::string_view, std::string*> texts[] = {{"--name", &wish.modelName},
                                                             {"--hwrev", &wish.hwRev},
                                                             {"--date", &wish.date},
                                                             {"--comments", &wish.comments},
                                                             {"--record-id", &wish.recordId}};
  for (const auto& [name, text] : texts) {
    if (option == name) return *text = *value, true;
  }
  if (option == "--device") return TakeDevice(*value, options);
  if (option == "--leave-out") return TakeRange(*value, options);
  if (option == "--model") {
    const auto model = Number(*value);
    if (!model || *model == 0 || *model > 0x7FFFFFFF) return Wrong("--model wants a number above 0");
    wish.model = static_cast<std::int32_t>(*model);
    return true;
  }
  if (option == "--version") {
    for (const std::string_view each : text::Split(*value, ',')) {
      const auto digits = VersionDigits(each);
      if (!digits) return Wrong("--version wants versions such as 5.14");
      options.versions.push_back(*digits);
    }
    return true;
  }
  return Wrong("there is no option " + std::string(option));
}

/// The parts of the package from its hex files.
bool TakeFiles(Options& options, Arguments files) {
  if (options.devices.empty()) options.devices = {"AZM MOTOR, 16", "ALT MOTOR, 17"};
  if (files.size() > 1 && files.size() != options.devices.size())
    return Wrong("there are as many devices as hex files, or one file for all");
  if (options.versions.size() != 1 && options.versions.size() != files.size())
    return Wrong("there is one --version, or one for each hex file");
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::error_code error;
    const auto text = files::ReadWhole(files[i], kLargestHex, error);
    if (!text) return Wrong(std::string(files[i]) + ": " + error.message());
    const std::string& version = options.versions[options.versions.size() == 1 ? 0 : i];
    const bool all = files.size() == 1;
    options.wish.parts.push_back(
        {files[i], *text, version, all ? options.devices : std::vector{options.devices[i]}});
  }
  return true;
}

int Make(Options& options, const std::string& path) {
  const std::string name = std::filesystem::path(path).filename().string();
  const auto told = Narrow(name);
  if (!told || !text::EqualNoCase(name.substr(name.size() - std::min<std::size_t>(4, name.size())), ".qal")) {
    Wrong(path + ": no name of a package, which ends in .qal and is written in Windows-1252");
    return kFaults;
  }
  options.wish.fileName = *told;
  const Made made = MakePackage(options.wish);
  for (const std::string& remark : made.remarks) std::printf("%s\n", text::ForTerminal(remark).c_str());
  for (const std::string& fault : made.faults) std::fprintf(stderr, "%s\n", text::ForTerminal(fault).c_str());
  if (made.package.empty()) return kFaults;
  const std::error_code error = files::Replace(path, made.package);
  if (error) Wrong(path + ": " + error.message());
  return error ? kFaults : 0;
}

int Run(Arguments arguments) {
  Options options;
  for (; arguments.size() >= 2 && std::string_view(arguments[0]).starts_with("--");
       arguments = arguments.subspan(2)) {
    if (!TakeOption(arguments[0], arguments[1], options)) return kWrongUse;
  }
  if (arguments.size() < 2 || options.wish.model == 0 || options.versions.empty()) {
    std::fputs(kUsage, stderr);
    return kWrongUse;
  }
  if (!TakeFiles(options, arguments.subspan(1))) return kFaults;
  return Make(options, arguments[0]);
}

}  // namespace

int main(int argc, char** argv) {
  const auto words = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (const auto answered = cli::AnswerCommonWords(words, "qalmake", kUsage)) return *answered;
  int status = kFaults;
  if (!Contain([&] { status = Run(words); })) std::fputs("qalmake: not enough memory\n", stderr);
  return status;
}
