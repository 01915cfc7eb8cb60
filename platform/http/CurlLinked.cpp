// libcurl where it is a part of the program, since the system has none: nothing has to be found or loaded.
#include "CurlApi.h"

namespace tarnwick::http {
namespace {

CurlApi Functions() {
  CurlApi api;
#define TARNWICK_CURL_FUNCTION(name, function) api.name = &function;
  TARNWICK_CURL_FUNCTIONS(TARNWICK_CURL_FUNCTION)
#undef TARNWICK_CURL_FUNCTION
  return api;
}

}  // namespace

const CurlApi* Curl(std::string& cause) {
  static const CurlApi api = Functions();
  static const bool ready = api.globalInit(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  cause = ready ? "" : "libcurl cannot be set up";
  return ready ? &api : nullptr;
}

}  // namespace tarnwick::http
