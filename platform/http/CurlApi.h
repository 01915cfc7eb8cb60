// The functions of libcurl that the transport calls, found by name at run time.
#pragma once

#include <curl/curl.h>

namespace tarnwick::http {

struct CurlApi {
  decltype(&curl_global_init) globalInit;
  decltype(&curl_easy_init) easyInit;
  decltype(&curl_easy_cleanup) easyCleanup;
  decltype(&curl_easy_setopt) set;
  decltype(&curl_easy_getinfo) get;
  decltype(&curl_slist_append) append;
  decltype(&curl_slist_free_all) freeList;
  decltype(&curl_multi_init) multiInit;
  decltype(&curl_multi_cleanup) multiCleanup;
  decltype(&curl_multi_add_handle) add;
  decltype(&curl_multi_remove_handle) remove;
  decltype(&curl_multi_perform) perform;
  decltype(&curl_multi_poll) poll;
  decltype(&curl_multi_info_read) infoRead;
};

/// Loads libcurl at the first call; it stays to the end of the process, for it may have a thread at
/// work that looks a name up. Null when the system has none that is fit.
const CurlApi* Curl();

}  // namespace tarnwick::http
