#include "CurlApi.h"

#include <memory>
#include <optional>

#include "platform/library.h"

namespace tarnwick::http {
namespace {

template <class Function>
bool Bind(const SharedLibrary& library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(library.Find(name));
  return function != nullptr;
}

std::optional<CurlApi> Load() {
  const std::unique_ptr<SharedLibrary> library = SharedLibrary::OpenSystem("libcurl.so.4");
  CurlApi api{};
  const bool whole =
      library && Bind(*library, "curl_global_init", api.globalInit) &&
      Bind(*library, "curl_easy_init", api.easyInit) &&
      Bind(*library, "curl_easy_cleanup", api.easyCleanup) && Bind(*library, "curl_easy_setopt", api.set) &&
      Bind(*library, "curl_easy_getinfo", api.get) && Bind(*library, "curl_slist_append", api.append) &&
      Bind(*library, "curl_slist_free_all", api.freeList) &&
      Bind(*library, "curl_multi_init", api.multiInit) &&
      Bind(*library, "curl_multi_cleanup", api.multiCleanup) &&
      Bind(*library, "curl_multi_add_handle", api.add) &&
      Bind(*library, "curl_multi_remove_handle", api.remove) &&
      Bind(*library, "curl_multi_perform", api.perform) && Bind(*library, "curl_multi_poll", api.poll) &&
      Bind(*library, "curl_multi_info_read", api.infoRead);
  if (!whole || api.globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return std::nullopt;
  return api;
}

}  // namespace

const CurlApi* Curl() {
  static const std::optional<CurlApi> api = Load();
  return api ? &*api : nullptr;
}

}  // namespace tarnwick::http
