// Fetches the program's own files from the update site.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "webupdate/Catalogue.h"
#include "webupdate/SignedFile.h"

namespace tarnwick {

class HTTPClass;

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

}  // namespace tarnwick
