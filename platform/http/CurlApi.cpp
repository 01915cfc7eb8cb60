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
  CurlApi api;
  bool whole = library != nullptr;
#define TARNWICK_CURL_FUNCTION(name, function) whole = whole && Bind(*library, #function, api.name);
  TARNWICK_CURL_FUNCTIONS(TARNWICK_CURL_FUNCTION)
#undef TARNWICK_CURL_FUNCTION
  if (!whole || api.globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return std::nullopt;
  return api;
}

}  // namespace

const CurlApi* Curl() {
  static const std::optional<CurlApi> api = Load();
  return api ? &*api : nullptr;
}

}  // namespace tarnwick::http
