// The functions of libcurl that the transport calls, found by name at run time.
#pragma once

#include <curl/curl.h>

#include <string>

namespace tarnwick::http {

/// Each function's name here and its name in the library: the one list.
#define TARNWICK_CURL_FUNCTIONS(FUNCTION)    \
  FUNCTION(globalInit, curl_global_init)     \
  FUNCTION(easyInit, curl_easy_init)         \
  FUNCTION(easyCleanup, curl_easy_cleanup)   \
  FUNCTION(set, curl_easy_setopt)            \
  FUNCTION(get, curl_easy_getinfo)           \
  FUNCTION(pause, curl_easy_pause)           \
  FUNCTION(append, curl_slist_append)        \
  FUNCTION(freeList, curl_slist_free_all)    \
  FUNCTION(multiInit, curl_multi_init)       \
  FUNCTION(multiCleanup, curl_multi_cleanup) \
  FUNCTION(add, curl_multi_add_handle)       \
  FUNCTION(remove, curl_multi_remove_handle) \
  FUNCTION(perform, curl_multi_perform)      \
  FUNCTION(poll, curl_multi_poll)            \
  FUNCTION(infoRead, curl_multi_info_read)   \
  FUNCTION(errorText, curl_easy_strerror)

struct CurlApi {
#define TARNWICK_CURL_FUNCTION(name, function) decltype(&function) name = nullptr;
  TARNWICK_CURL_FUNCTIONS(TARNWICK_CURL_FUNCTION)
#undef TARNWICK_CURL_FUNCTION
};

/// Loads libcurl at the first call; it stays to the end of the process, for it may have a thread at
/// work that looks a name up. Null, and the reason in `cause`, when the system has none that is fit.
const CurlApi* Curl(std::string& cause);

}  // namespace tarnwick::http
