#include "webupdate/ProgramInstaller.h"

#include <optional>

#include "platform/files.h"
#include "platform/program.h"
#include "platform/ui.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/SelfUpdate.h"
#include "webupdate/Site.h"
#include "webupdate/Swap.h"
#include "webupdate/Touch.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

std::optional<PublicKey> gTrusted;

/// Saves a fetched file where it waits for the swap. It can be run where the one that it is for could be.
bool Save(const ProgramEntry& entry, std::string_view content) {
  const fs::path& folder = program::This().folder;
  const fs::path fetched = folder / entry.LocalName;
  const fs::path installed = folder / InstalledName(entry.Name);
  if (files::Replace(fetched, content)) return false;
  std::error_code error;
  const fs::file_status old = fs::status(installed, error);
  if (fs::is_regular_file(old)) fs::permissions(fetched, old.permissions(), error);
  if (const auto date = ReadDate(entry.Version)) Touch(fetched, *date);
  return true;
}

}  // namespace

void TrustKey(const PublicKey& key) {
  gTrusted = key;
}

bool ProgramInstaller::InstallNewProgram(const Catalogue& catalogue) {
  const fs::path& folder = program::This().folder;
  mDisplay.hourglass(true);
  bool outcome = true;
  std::optional<HTTPClass> http(std::in_place);
  http->Progress = mDisplay.progress;
  std::vector<SwapFile> swap;
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const ProgramEntry& entry = catalogue.Programs(i);
    if (!entry.Newer) continue;
    ui::PumpEvents();
    outcome = Fetch(*http, entry) && outcome;
    swap.push_back({entry.LocalName, InstalledName(entry.Name)});
  }
  http.reset();
  ui::PumpEvents();
  mDisplay.hourglass(false);
  if (!outcome) return false;
  mDisplay.pacifier("Installing Program ...");
  ui::PumpEvents();
  if (WriteSwap(folder, swap)) return false;
  ui::MessageBox("Program downloaded successfully ...\r\n\r\nPress Ok to Run the New Version.",
                 ui::Buttons::Ok, ui::Icon::Information);
  return StartSwap(folder, swap, program::Executable());
}

bool ProgramInstaller::Fetch(HTTPClass& http, const ProgramEntry& entry) {
  if (!OpenSite(http)) return false;
  mDisplay.expect(entry.Size);
  std::string method = "GET";
  const std::string content = http.SendRequestBinary(SitePath(entry.Name), method, {}, true);
  return gTrusted && content.size() == static_cast<std::size_t>(entry.Size) &&
         IsSigned(content, entry.Name, entry.Version, *gTrusted) && Save(entry, content);
}

}  // namespace tarnwick
