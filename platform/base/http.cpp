#include "platform/http.h"

namespace tarnwick::http {
namespace {

ITransport* gTransport = nullptr;

}  // namespace

void Install(ITransport& transport) {
  gTransport = &transport;
}
void Uninstall() {
  gTransport = nullptr;
}

std::unique_ptr<ISession> OpenSession(const std::string& agent) {
  return gTransport == nullptr ? nullptr : gTransport->OpenSession(agent);
}

}  // namespace tarnwick::http
