// The program's own renewal: what of the catalogue is newer than what is installed.
#pragma once

#include <string>
#include <string_view>

#include "webupdate/Catalogue.h"

namespace tarnwick {

/// The endings that programs and libraries have in the catalogue, whatever the case of their letters.
inline constexpr std::string_view kProgramEnding = ".exe";
inline constexpr std::string_view kLibraryEnding = ".dll";

/// Whether a file of that name in the catalogue is a program or a library, which has a version; any other has
/// a date.
bool HasVersion(std::string_view catalogueName);

/// The name that a file of the catalogue has where it is installed on this system: programs and libraries
/// have other endings here, and the running program keeps the name that its user gave it.
std::string InstalledName(std::string_view catalogueName);

/// Sets `Newer` of each entry of `Programs`. True when some entry is newer.
bool CheckForNewProgram(Catalogue& catalogue);

/// The question whether to install what is newer.
std::string UpdateQuestion(const Catalogue& catalogue);

}  // namespace tarnwick
