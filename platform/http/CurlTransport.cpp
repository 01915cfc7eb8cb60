#include "platform/http/CurlTransport.h"

#include "CurlRequest.h"

namespace tarnwick::http {

bool CurlTransport::Ready(std::string& cause) {
  return Curl(cause) != nullptr;
}

std::unique_ptr<IRequest> CurlTransport::OpenRequest(const Server& server, const std::string& method,
                                                     const std::string& path, bool reload) {
  std::string unsaid;
  const CurlApi* const curl = Curl(unsaid);
  if (curl == nullptr) return nullptr;
  auto request = std::make_unique<CurlRequest>(*curl, mLimits);
  if (!request->Open(server, method, path, reload)) return nullptr;
  return request;
}

}  // namespace tarnwick::http
