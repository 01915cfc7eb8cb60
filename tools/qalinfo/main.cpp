// Prints and checks firmware packages, for those who make or publish them.
//
//   qalinfo FILE...            what is in each package, in plain text, and what its maker should know
//   qalinfo --json FILE...     the same as one JSON object a file, one a line
//   qalinfo --strict ...       a remark counts as an error
//   qalinfo --dump N FILE      the image of device N (from 1) as Intel HEX
//
// Exit status: 0 without errors, 1 with errors in a package, 2 for wrong use and for output that cannot
// be written.
#include <charconv>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Reports.h"
#include "firmware/QALclass.h"
#include "firmware/QalLint.h"
#include "platform/cli.h"
#include "platform/contain.h"

namespace {

using namespace tarnwick;

constexpr int kGood = 0;
constexpr int kErrors = 1;
constexpr int kWrongUse = 2;

constexpr const char* kUsage =
    "Usage: qalinfo [--strict] FILE...\n"
    "  or:  qalinfo [--strict] --json FILE...\n"
    "  or:  qalinfo --dump N FILE\n\n"
    "Prints and checks firmware packages: the header, the devices, the first error, and what the format "
    "passes\n"
    "over without a word. FILE is \"-\" for standard input.\n\n"
    "  --strict   what is passed over counts as an error\n"
    "  --json     one JSON object a file, one a line\n"
    "  --dump N   the image of device N, from 1, as Intel HEX\n\n"
    "Exits 0 without errors, 1 with errors in a package, 2 for wrong use and for output that cannot be\n"
    "written.\n";

struct Options {
  bool json = false;
  bool strict = false;
  std::int32_t dump = 0;  ///< Device whose image is asked for; 0 for none.
  std::span<char*> files;
};

/// A device's number, from 1.
std::optional<std::int32_t> DeviceNumber(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 1) return std::nullopt;
  return number;
}

/// Takes the first argument off; empty when there is none.
std::string_view Take(std::span<char*>& arguments) {
  if (arguments.empty()) return {};
  const std::string_view first = arguments.front();
  arguments = arguments.subspan(1);
  return first;
}

/// Nothing for wrong use.
std::optional<Options> ReadOptions(std::span<char*> arguments) {
  Options options{.files = arguments};
  while (!options.files.empty() && std::string_view(options.files.front()).starts_with("--")) {
    const std::string_view option = Take(options.files);
    if (option == "--") break;
    const auto number = option == "--dump" ? DeviceNumber(Take(options.files)) : std::nullopt;
    if (option != "--json" && option != "--strict" && !number) return std::nullopt;
    options.json |= option == "--json";
    options.strict |= option == "--strict";
    options.dump = number.value_or(options.dump);
  }
  if (options.files.empty()) return std::nullopt;
  if (options.dump != 0 && (options.json || options.strict || options.files.size() != 1)) return std::nullopt;
  return options;
}

int Dump(const QALclass& package, std::int32_t device) {
  if (package.ErrorsFound()) {
    qalinfo::WriteText(stderr, package, {});
    return kErrors;
  }
  if (device > package.Devices()) {
    std::fprintf(stderr, "qalinfo: %s has no device %d\n", qalinfo::ShownPath(package).c_str(), device);
    return kWrongUse;
  }
  qalinfo::WriteImage(stdout, package, device);
  return kGood;
}

int Run(const Options& options) {
  int status = kGood;
  for (const char* file : options.files) {
    QALclass package;
    const std::string input = std::string_view(file) == "-" ? cli::ReadInput() : std::string();
    package.LoadQALfile(file, input);
    if (options.dump != 0) return Dump(package, options.dump);
    const bool found = package.LastError() != 1;
    const std::vector<QalRemark> remarks = !found          ? std::vector<QalRemark>()
                                           : input.empty() ? LintFile(file, package)
                                                           : LintText(input, package.Filename(), package);
    if (package.ErrorsFound() || (options.strict && !remarks.empty())) status = kErrors;
    (options.json ? qalinfo::WriteJson : qalinfo::WriteText)(stdout, package, remarks);
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const auto words = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (const auto answered = cli::AnswerCommonWords(words, "qalinfo", kUsage)) return *answered;
  const std::optional<Options> options = ReadOptions(words);
  if (!options) {
    std::fputs(kUsage, stderr);
    return kWrongUse;
  }
  int status = kErrors;
  if (!Contain([&] { status = Run(*options); })) std::fputs("qalinfo: not enough memory\n", stderr);
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::perror("qalinfo");
    return kWrongUse;
  }
  return status;
}
