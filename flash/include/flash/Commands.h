// What tarnwick-flash does: the jobs of the window's pages, asked for by the command line.
#pragma once

#include "flash/Arguments.h"
#include "flash/Console.h"
#include "flash/Exit.h"
#include "flash/Output.h"

namespace tarnwick::flash {

/// What a command works with. The user is in place.
struct Job {
  const Arguments& arguments;
  Output& output;
  Console& user;
};

/// The whole job, from the reading of the settings to the closing of the port. A note of an unfinished run is
/// told first. The program's folder and its record are there.
Exit Perform(const Job& job);

Exit ListPorts(const Job& job);
Exit ShowStatus(const Job& job);
/// Holds the package against the mount. Nothing is changed there.
Exit CheckPackage(const Job& job);
Exit ProgramPackage(const Job& job);
Exit VerifyPackage(const Job& job);
Exit ListPackages(const Job& job);
Exit FetchPackages(const Job& job);
/// Throws the note of an unfinished run away, or what it says of the chosen motor.
Exit ForgetNote(const Job& job);

}  // namespace tarnwick::flash
