#include "webupdate/Site.h"

#include "settings/Settings.h"
#include "webupdate/HTTPClass.h"

namespace tarnwick {
namespace {

constexpr std::int32_t kPort = 80;

}  // namespace

bool OpenSite(HTTPClass& http) {
  return http.OpenHTTP(DomainName, kPort, DomainUser, DomainPassword);
}

std::string CataloguePath() {
  return DomainPath + DomainDir;
}

std::string SitePath(std::string_view name) {
  return DomainPath + "/" + std::string(name);
}

std::string FetchText(HTTPClass& http, const std::string& path) {
  return http.SendRequestFile(path);
}

}  // namespace tarnwick
