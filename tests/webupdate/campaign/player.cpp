// What the program does about updates and nothing else: no window, no mount, no network. Its version stands
// behind its own end, and so does that of the "library" beside it, so that a file's copy is another release.
//
//   Tarnwick         starts as the program does, tells in "shown" which release it is, shows its first page
//   Tarnwick fetch   the same, and then fetches the release that lies in "site/"
//   Tarnwick late    the same, but comes to its library some time after its start
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "platform/files.h"
#include "platform/http.h"
#include "platform/program.h"
#include "platform/ui.h"
#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "webupdate/ProgramInstaller.h"
#include "webupdate/SelfUpdate.h"
#include "webupdate/Start.h"

using namespace tarnwick;

namespace {

/// What stands behind the last "#" of a file.
std::string VersionIn(const std::filesystem::path& file) {
  const std::string content = files::ReadWhole(file).value_or("");
  return content.substr(content.rfind('#') + 1);
}

/// Whoever looks sees each line whole, and what was mixed once.
void Show(const std::filesystem::path& folder, const std::string& own) {
  const std::string line = own + " " + VersionIn(folder / "Tarnwick.so") + "\n";
  std::FILE* const shown = std::fopen((folder / "shown").c_str(), "ae");
  std::setvbuf(shown, nullptr, _IONBF, 0);
  std::fwrite(line.data(), 1, line.size(), shown);
  std::fclose(shown);
}

int Fetch(const std::filesystem::path& site) {
  test::HttpDouble double_;
  DomainName = "site", DomainPath = "";
  for (const auto& each : std::filesystem::directory_iterator(site))
    double_.replies["/" + each.path().filename().string()] = files::ReadWhole(each.path()).value_or("");
  Catalogue catalogue;
  catalogue.Load(double_.replies["/list.txt"], 0);
  if (!CheckForNewProgram(catalogue) || MayInstall().refusal != Refusal::None) return 0;
  const auto ignore = [](const auto&) {};
  ProgramInstaller installer({ignore, ignore, ignore, ignore});
  installer.InstallNewProgram(catalogue);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // Behind the version: what this release does wrong, "#2.2.5 torn".
  const std::string own = VersionIn("/proc/self/exe");
  const bool trial = argc == 2 && argv[1] == kTrial;
  if (trial) return own.ends_with("torn") ? 1 : 0;
  program::Identity self = program::This();
  self.revision = own[4] - '0';
  program::Set(self);
  TrustKey(*ReadPublicKey(files::ReadWhole(self.folder / "key").value_or("")));
  const Beginning beginning = BeginProgram(TryProgram);
  if (beginning.what == Beginning::What::End) return beginning.status;
  if (beginning.what == Beginning::What::Failed) return 3;
  if (beginning.what == Beginning::What::Busy) return 4;
  if (argc == 2 && std::string_view(argv[1]) == "late")
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  Show(self.folder, own.substr(0, 5));
  if (own.ends_with("dies")) ::_exit(9);
  FirstPageShown();
  return argc == 2 ? Fetch(self.folder / "site") : 0;
}
