// Makes an update site from a folder of packages, their notes, and files of the program. How the folder is
// laid out and how the site is served is told in docs/update-site.md.
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

#include "Keys.h"
#include "SitePlan.h"
#include "platform/contain.h"

namespace {

using namespace tarnwick;

constexpr int kFaults = 1;
constexpr int kWrongUse = 2;
constexpr const char* kUsage =
    "usage: tarnwick-site build [--key FILE] SRC DEST\n"
    "       tarnwick-site keygen DIR\n"
    "  SRC   has MotorControllers/, Accessories/ and Program/, each where there is something for it\n"
    "  DEST  the folder that is served; made where it is missing\n"
    "  FILE  the secret key that files of the program are signed with; without it the program takes none\n"
    "  DIR   where a new pair of keys is put: update.key, to be kept secret, and update.pub\n"
    "Exits 0 when all is done, 1 when something is wrong with a file or folder: nothing is listed then\n"
    "that was not before, and no key replaced.\n";

int Build(const char* keyFile, const char* source, const char* folder) {
  std::optional<SecretKey> key;
  if (keyFile != nullptr && !(key = site::ReadKeyFile(keyFile))) return kFaults;
  const site::SitePlan plan = site::MakePlan(source, key);
  for (const std::string& fault : plan.faults) std::fprintf(stderr, "%s\n", fault.c_str());
  if (!plan.faults.empty() || !site::Publish(plan, folder)) return kFaults;
  std::printf("%zu files and their catalogue in %s\n", plan.files.size(), folder);
  return 0;
}

int Run(std::span<char*> arguments) {
  const auto is = [&](std::size_t index, std::string_view word) { return arguments[index] == word; };
  if (arguments.size() == 2 && is(0, "keygen")) return site::MakeKeyFiles(arguments[1]) ? 0 : kFaults;
  if (arguments.size() == 3 && is(0, "build")) return Build(nullptr, arguments[1], arguments[2]);
  if (arguments.size() == 5 && is(0, "build") && is(1, "--key"))
    return Build(arguments[2], arguments[3], arguments[4]);
  std::fputs(kUsage, stderr);
  return kWrongUse;
}

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  int status = kFaults;
  if (!Contain([&] { status = Run(arguments); })) {
    std::fputs("tarnwick-site: a folder cannot be read, or memory ran out\n", stderr);
  }
  return status;
}
