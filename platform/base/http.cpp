#include "platform/http.h"

#include "platform/ui.h"

namespace tarnwick::http {

void Wait() {
  if (const Waiting* const waiting = Seam<Waiting>::Used()) return waiting->pump();
  ui::PumpPainting();
}

bool IsGivenUp() {
  const Waiting* const waiting = Seam<Waiting>::Used();
  return waiting != nullptr && waiting->isGivenUp();
}

bool Ready(std::string& cause) {
  if (ITransport* const transport = Seam<ITransport>::Used()) return transport->Ready(cause);
  cause = "there is no transport";
  return false;
}

std::unique_ptr<IRequest> OpenRequest(const Server& server, const std::string& method,
                                      const std::string& path, bool reload) {
  ITransport* const transport = Seam<ITransport>::Used();
  return transport == nullptr ? nullptr : transport->OpenRequest(server, method, path, reload);
}

}  // namespace tarnwick::http
