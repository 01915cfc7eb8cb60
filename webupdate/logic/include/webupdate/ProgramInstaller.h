// Fetches a release of the program from the update site.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "webupdate/Catalogue.h"
#include "webupdate/Refusal.h"
#include "webupdate/Release.h"

namespace tarnwick {

class HTTPClass;

/// Whether files of the program may be changed: to be asked before the user is.
WhyNot MayInstall();
/// What the user is told when they may not, or when installing them failed.
std::string MayNotText(const WhyNot& why);

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

  /// Fetches each file of the offered release that differs from the installed one, beside those, and starts
  /// what starts the program again. True when that waits for this process to end: the next start installs
  /// the release. On false no installed file has changed, nothing of it is left, and `Why` tells the cause.
  bool InstallNewProgram(const Catalogue& catalogue);
  const WhyNot& Why() const { return mWhy; }

 private:
  bool Refuse(Refusal refusal, const std::string& file = {}, std::error_code cause = {});
  bool Stage(const Release& release);
  bool FetchAll(const Release& release, const std::string& staging);
  bool Fetch(HTTPClass& http, const ReleaseFile& file, const std::string& staging);

  Display mDisplay;
  WhyNot mWhy;
};

}  // namespace tarnwick
