#include "flash/Commands.h"
#include "link/Devices.h"
#include "platform/contain.h"
#include "platform/ui.h"
#include "settings/Settings.h"
#include "webupdate/Catalogue.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/Packages.h"
#include "webupdate/Site.h"

namespace tarnwick::flash {
namespace {

/// Takes what the site offers and what the folder has. False when the site gave nothing; the folder's
/// packages are there then.
bool TakeCatalogue(Catalogue& catalogue) {
  std::string text;
  HTTPClass http;
  if (OpenSite(http)) text = FetchText(http, CataloguePath());
  catalogue.Load(text, gDeviceClass);
  Contain([&catalogue] { catalogue.MergeLocalFiles(gFirmwareDir); });
  catalogue.SortFiles();
  return !text.empty();
}

void WritePackage(JsonLine& json, const FileEntry& entry) {
  json.Open('{');
  json.Key("name");
  json.Shown(entry.Name);
  json.Member("date", entry.Date);
  json.Member("size", entry.Size);
  json.Member("here", entry.Local);
  json.Member("on_site", entry.Remote);
  json.Close('}');
}

/// Where the package is, in a word.
const char* PlaceOf(const FileEntry& entry) {
  if (!entry.Remote) return "here";
  return entry.Local ? "here, site" : "site";
}

}  // namespace

Exit ListPackages(const Job& job) {
  Catalogue catalogue;
  const bool reached = TakeCatalogue(catalogue);
  for (std::int32_t i = 1; i <= catalogue.FileCount(); ++i) {
    const FileEntry& entry = catalogue.Files(i);
    job.output.Line(entry.Date + "  " + entry.Name + "  (" + PlaceOf(entry) + ")");
  }
  job.output.Member("packages", [&catalogue](JsonLine& json) {
    json.Open('[');
    for (std::int32_t i = 1; i <= catalogue.FileCount(); ++i) WritePackage(json, catalogue.Files(i));
    json.Close(']');
  });
  return reached ? Exit::Done : Exit::SiteFailed;
}

Exit FetchPackages(const Job& job) {
  Catalogue catalogue;
  if (!TakeCatalogue(catalogue)) return Exit::SiteFailed;
  const std::string& wanted = job.arguments.operand;
  bool known = wanted.empty();
  for (std::int32_t i = 1; i <= catalogue.FileCount() && !job.user.IsEnding(); ++i) {
    FileEntry& entry = catalogue.Files(i);
    const bool named = entry.Remote && (wanted == entry.Name || wanted == FileNameOf(entry));
    known = known || named;
    if (!named && (!wanted.empty() || entry.Local || !entry.Remote)) continue;
    HTTPClass http;
    if (!DownloadPackage(http, gFirmwareDir, entry)) return Exit::SiteFailed;
    job.output.Line(entry.Name + " is here.");
    job.output.Event("fetched", [&entry](JsonLine& json) {
      json.Key("name");
      json.Shown(entry.Name);
    });
  }
  if (!known) job.output.Note("The site has no package of that name: " + wanted);
  return known && !job.user.IsEnding() ? Exit::Done : Exit::Refused;
}

}  // namespace tarnwick::flash
