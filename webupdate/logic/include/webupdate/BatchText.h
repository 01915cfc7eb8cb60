// The swap of the program's files as a batch file.
#pragma once

#include <string>

#include "webupdate/Catalogue.h"

namespace tarnwick {

/// The script that does the same on a system with batch files, where the old files cannot be replaced before
/// the program has ended. `programDirectory` has no separator at its end.
std::string BatchText(const Catalogue& catalogue, const std::string& programDirectory,
                      const std::string& executableName);

}  // namespace tarnwick
