// Makes an update site from a folder of packages, their notes, and files of the program. How the folder is
// laid out and how the site is served is told in docs/update-site.md.
#include <cstdio>
#include <span>
#include <string_view>

#include "SitePlan.h"
#include "platform/contain.h"

namespace {

using namespace tarnwick;

constexpr int kFaults = 1;
constexpr int kWrongUse = 2;
constexpr const char* kUsage =
    "usage: tarnwick-site build SRC DEST\n"
    "  SRC   has MotorControllers/, Accessories/ and Program/, each where there is something for it\n"
    "  DEST  the folder that is served; made where it is missing\n"
    "Exits 0 when the site stands, 1 when something is wrong with SRC or DEST: nothing is listed then\n"
    "that was not before.\n";

int Build(const char* source, const char* folder) {
  const site::SitePlan plan = site::MakePlan(source);
  for (const std::string& fault : plan.faults) std::fprintf(stderr, "%s\n", fault.c_str());
  if (!plan.faults.empty() || !site::Publish(plan, folder)) return kFaults;
  std::printf("%zu files and their catalogue in %s\n", plan.files.size(), folder);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (arguments.size() != 3 || std::string_view(arguments[0]) != "build") {
    std::fputs(kUsage, stderr);
    return kWrongUse;
  }
  int status = kFaults;
  if (!Contain([&] { status = Build(arguments[1], arguments[2]); })) {
    std::fputs("tarnwick-site: a folder cannot be read, or memory ran out\n", stderr);
  }
  return status;
}
