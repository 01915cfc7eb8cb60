// What tarnwick-flash does: the jobs of the window's pages, asked for by the command line.
#pragma once

#include "Arguments.h"
#include "Console.h"
#include "Exit.h"
#include "Output.h"

namespace tarnwick::flash {

/// What a command works with. The settings are read, the user is in place.
struct Job {
  const Arguments& arguments;
  Output& output;
  Console& user;
};

Exit ListPorts(const Job& job);
Exit ShowStatus(const Job& job);
/// Holds the package against the mount. Nothing is changed there.
Exit CheckPackage(const Job& job);
Exit ProgramPackage(const Job& job);
Exit VerifyPackage(const Job& job);
Exit ListPackages(const Job& job);
Exit FetchPackages(const Job& job);

}  // namespace tarnwick::flash
