// Makes an update site from a folder of packages, their notes, and files of the program. How the folder is
// laid out and how the site is served is told in docs/update-site.md.
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

#include "Keys.h"
#include "SitePlan.h"
#include "platform/cli.h"
#include "platform/contain.h"
#include "platform/program.h"

namespace {

using namespace tarnwick;

constexpr int kFaults = 1;
constexpr int kWrongUse = 2;
constexpr const char* kUsage =
    "Usage: tarnwick-site build [--key FILE] [--public-key KEY] [--next-key KEY] [--system NAME] SRC DEST\n"
    "  or:  tarnwick-site keygen DIR\n"
    "  or:  tarnwick-site check-key KEY\n\n"
    "Makes an update site from a folder of packages, their notes, and files of the program.\n\n"
    "  SRC   has MotorControllers/, Accessories/ and Program/, each where there is something for it\n"
    "  DEST  the folder that is served; made where it is missing\n"
    "  FILE  the secret key that packages and files of the program are signed with; without it there may be\n"
    "        none of the program, and packages are as they are\n"
    "  KEY   a public key, or its file: --public-key is the one that FILE has to belong to, --next-key the\n"
    "        one of releases to come; check-key tells whether it is one\n"
    "  NAME  the system that the files of the program are for; this one when left out\n"
    "  DIR   where a new pair of keys is put: update.key, to be kept secret, and update.pub\n\n"
    "Exits 0 when all is done, 1 when something is wrong with a file or folder: nothing is listed then\n"
    "that was not before, and no key replaced.\n";

using Arguments = std::span<char*>;

/// Takes the options off `arguments`. None where one is not known or has no value; `fault` is set where a
/// value is wrong.
std::optional<site::Signing> TakeOptions(Arguments& arguments, bool& fault) {
  site::Signing signing{.key = {}, .open = {}, .next = {}, .system = program::System()};
  for (; arguments.size() >= 2 && std::string_view(arguments[0]).starts_with("--");
       arguments = arguments.subspan(2)) {
    const std::string_view option = arguments[0];
    const char* const value = arguments[1];
    if (option == "--key") {
      fault = fault || !(signing.key = site::ReadKeyFile(value));
    } else if (option == "--public-key") {
      fault = fault || !(signing.open = site::ReadPublicKeyOrFile(value));
    } else if (option == "--next-key") {
      fault = fault || !(signing.next = site::ReadPublicKeyOrFile(value));
    } else if (option == "--system") {
      signing.system = value;
    } else {
      return std::nullopt;
    }
  }
  return signing;
}

int Build(const site::Signing& signing, const char* source, const char* folder) {
  const site::SitePlan plan = site::MakePlan(source, signing);
  for (const std::string& fault : plan.faults) std::fprintf(stderr, "%s\n", fault.c_str());
  if (!plan.faults.empty() || !site::Publish(plan, folder)) return kFaults;
  std::printf("%zu files and their catalogue in %s\n", plan.files.size(), folder);
  return 0;
}

int Run(Arguments arguments) {
  const std::string_view command = arguments.empty() ? "" : arguments[0];
  if (arguments.size() == 2 && command == "keygen") return site::MakeKeyFiles(arguments[1]) ? 0 : kFaults;
  if (arguments.size() == 2 && command == "check-key")
    return site::ReadPublicKeyOrFile(arguments[1]) ? 0 : kFaults;
  if (command == "build") {
    bool fault = false;
    arguments = arguments.subspan(1);
    const auto signing = TakeOptions(arguments, fault);
    if (signing && arguments.size() == 2)
      return fault ? kFaults : Build(*signing, arguments[0], arguments[1]);
  }
  std::fputs(kUsage, stderr);
  return kWrongUse;
}

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (const auto answered = cli::AnswerCommonWords(arguments, "tarnwick-site", kUsage)) return *answered;
  int status = kFaults;
  if (!Contain([&] { status = Run(arguments); })) {
    std::fputs("tarnwick-site: a folder cannot be read, or memory ran out\n", stderr);
  }
  return status;
}
