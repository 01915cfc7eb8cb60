// The program's own renewal: what of the catalogue is newer than what is installed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "webupdate/Catalogue.h"
#include "webupdate/Release.h"

namespace tarnwick {

/// The endings that programs and libraries have in the catalogue, whatever the case of their letters.
inline constexpr std::string_view kProgramEnding = ".exe";
inline constexpr std::string_view kLibraryEnding = ".dll";

bool IsProgramName(std::string_view catalogueName);
bool IsLibraryName(std::string_view catalogueName);
/// Whether a file of that name in the catalogue is a program or a library, which has a version; any other has
/// a date.
bool HasVersion(std::string_view catalogueName);

/// The release that the catalogue offers this program: signed, for this system, not older than what runs, not
/// taken back before, and with a row for each of its files. None where there is none.
std::optional<Release> OfferedRelease(const Catalogue& catalogue);

/// Sets `Newer` of each entry of `Programs`; none is newer that the offered release does not name. True when
/// some entry is newer.
bool CheckForNewProgram(Catalogue& catalogue);

/// The question whether to install what is newer: of many files the first ones are named.
std::string UpdateQuestion(const Catalogue& catalogue);

}  // namespace tarnwick
