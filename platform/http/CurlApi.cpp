#include "CurlApi.h"

#include <memory>
#include <optional>

#include "platform/SharedLibrary.h"

namespace tarnwick::http {
namespace {

template <class Function>
bool Bind(const SharedLibrary& library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(library.Find(name));
  return function != nullptr;
}

/// libcurl, or why there is none.
struct Loaded {
  Loaded();
  std::optional<CurlApi> api;
  std::string cause;
};

Loaded::Loaded() {
  const std::unique_ptr<SharedLibrary> library = SharedLibrary::OpenSystem("libcurl.so.4", cause);
  CurlApi found;
#define TARNWICK_CURL_FUNCTION(name, function)                                    \
  if (cause.empty() && !Bind(*library, #function, found.name))                    \
    cause = std::string("libcurl lacks ") + #function;
  TARNWICK_CURL_FUNCTIONS(TARNWICK_CURL_FUNCTION)
#undef TARNWICK_CURL_FUNCTION
  if (cause.empty() && found.globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) cause = "libcurl cannot be set up";
  if (cause.empty()) api = found;
}

}  // namespace

const CurlApi* Curl(std::string& cause) {
  static const Loaded loaded;
  cause = loaded.cause;
  return loaded.api ? &*loaded.api : nullptr;
}

}  // namespace tarnwick::http
