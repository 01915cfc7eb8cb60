#include "CurlApi.h"

#include <memory>
#include <optional>

#include "platform/SharedLibrary.h"

namespace tarnwick::http {
namespace {

/// Finds the functions one by one, and remembers the first that is missing.
class Resolver {
 public:
  explicit Resolver(const SharedLibrary& library) : mLibrary(library) {}
  template <class Function>
  void Find(const char* name, Function& function) {
    function = reinterpret_cast<Function>(mLibrary.Find(name));
    if (function == nullptr && mMissing == nullptr) mMissing = name;
  }
  /// Null when none is missing.
  const char* Missing() const { return mMissing; }

 private:
  const SharedLibrary& mLibrary;
  const char* mMissing = nullptr;
};

/// libcurl, or why there is none.
struct Loaded {
  Loaded();
  std::optional<CurlApi> api;
  std::string cause;
};

Loaded::Loaded() {
  const std::unique_ptr<SharedLibrary> library = SharedLibrary::OpenSystem("libcurl.so.4", cause);
  if (!library) return;
  CurlApi found;
  Resolver resolver(*library);
#define TARNWICK_CURL_FUNCTION(name, function) resolver.Find(#function, found.name);
  TARNWICK_CURL_FUNCTIONS(TARNWICK_CURL_FUNCTION)
#undef TARNWICK_CURL_FUNCTION
  if (resolver.Missing() != nullptr) cause.assign("libcurl lacks ").append(resolver.Missing());
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
