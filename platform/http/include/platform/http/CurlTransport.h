// HTTP over libcurl, which is loaded at the first use: a program that is started to write
// firmware into a mount never pays for it.
//
// Asks in HTTP/1.1, in the clear, through the proxy that the environment names (`http_proxy`,
// `no_proxy`). Follows up to five redirections, to http and https alone; the credentials stay with the
// server that they are for, and go there only when it asks, by Basic or Digest. Asks for no compression
// and takes none.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/http.h"

namespace tarnwick::http {

/// What an answer may cost. Whoever goes over one of these breaks the answer off.
struct Limits {
  std::chrono::milliseconds connect =
      std::chrono::seconds(15);                                ///< To reach the server, with its name found.
  std::chrono::milliseconds stall = std::chrono::seconds(30);  ///< Waiting without a byte.
  std::chrono::milliseconds total = std::chrono::minutes(10);
  std::uint64_t answer = kLargestAnswer;             ///< Bytes of the answer.
  std::uint64_t headers = std::uint64_t{256} << 10;  ///< Bytes of all headers, of redirections as well.
};

/// Installs itself for its lifetime.
class CurlTransport final : public ITransport {
 public:
  explicit CurlTransport(const Limits& limits = {}) : mLimits(limits) {
    Seam<ITransport>::Install(*this);
  }
  ~CurlTransport() override { Seam<ITransport>::Uninstall(); }
  CurlTransport(const CurlTransport&) = delete;
  CurlTransport& operator=(const CurlTransport&) = delete;

  bool Ready(std::string& cause) override;
  std::unique_ptr<IRequest> OpenRequest(const Server& server, const std::string& method, const std::string& path,
                                        bool reload) override;

 private:
  Limits mLimits;
};

}  // namespace tarnwick::http
