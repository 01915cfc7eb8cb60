// The program's own renewal: what of the catalogue is newer than what is installed, and its way into the
// program's folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "webupdate/Catalogue.h"
#include "webupdate/SignedFile.h"

namespace tarnwick {

class HTTPClass;

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

/// The key whose holder may sign files of the program. Until it is set none is accepted.
void TrustKey(const PublicKey& key);

/// Fetches and saves files of the program.
class ProgramInstaller {
 public:
  /// What the window shows meanwhile. Each is called, so none may be empty.
  struct Display {
    std::function<void(std::int32_t)> expect;    ///< Bytes of the file that is fetched next.
    std::function<void(std::int32_t)> progress;  ///< Bytes of it so far.
    std::function<void(bool)> hourglass;
    std::function<void(const std::string&)> pacifier;  ///< A text over the progress bar, shown at once.
  };

  explicit ProgramInstaller(Display display) : mDisplay(std::move(display)) {}

  /// Fetches each newer entry under its `LocalName`, writes the swap and starts it. True when the swap waits
  /// for this process to end. False when one file cannot be had, is not what the catalogue says or was not
  /// signed as that: no installed file has changed then.
  bool InstallNewProgram(const Catalogue& catalogue);

 private:
  bool Fetch(HTTPClass& http, const ProgramEntry& entry);

  Display mDisplay;
};

/// The script that does the same on a system with batch files, where the old files cannot be replaced before
/// the program has ended. `programDirectory` has no separator at its end.
std::string BatchText(const Catalogue& catalogue, const std::string& programDirectory,
                      const std::string& executableName);

}  // namespace tarnwick
