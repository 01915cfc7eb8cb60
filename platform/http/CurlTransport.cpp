#include "platform/http/CurlTransport.h"

#include "CurlRequest.h"

namespace tarnwick::http {
namespace {

class CurlConnection final : public IConnection {
 public:
  CurlConnection(const CurlApi& curl, const Limits& limits, Peer peer)
      : mCurl(curl), mLimits(limits), mPeer(std::move(peer)) {}

  std::unique_ptr<IRequest> OpenRequest(const std::string& method, const std::string& path,
                                        bool reload) override {
    auto request = std::make_unique<CurlRequest>(mCurl, mLimits);
    if (!request->Open(mPeer, method, path, reload)) return nullptr;
    return request;
  }

 private:
  const CurlApi& mCurl;
  const Limits mLimits;
  const Peer mPeer;
};

class CurlSession final : public ISession {
 public:
  CurlSession(const CurlApi& curl, const Limits& limits, std::string agent)
      : mCurl(curl), mLimits(limits), mAgent(std::move(agent)) {}

  std::unique_ptr<IConnection> Connect(const std::string& server, std::uint16_t port,
                                       const std::string& userName, const std::string& password) override {
    return std::make_unique<CurlConnection>(mCurl, mLimits, Peer{mAgent, server, port, userName, password});
  }

 private:
  const CurlApi& mCurl;
  const Limits mLimits;
  const std::string mAgent;
};

}  // namespace

std::unique_ptr<ISession> CurlTransport::OpenSession(const std::string& agent) {
  const CurlApi* const curl = Curl();
  if (curl == nullptr) return nullptr;
  return std::make_unique<CurlSession>(*curl, mLimits, agent);
}

}  // namespace tarnwick::http
