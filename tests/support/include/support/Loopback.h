// Servers on the loopback for the real HTTP transport, at any free port.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>

#include "platform/http.h"

namespace tarnwick::test {

/// A socket that listens on the loopback, at a port that the system chose.
class Listener {
 public:
  Listener() : mSocket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(mSocket, reinterpret_cast<sockaddr*>(&address), size) == 0 && ::listen(mSocket, 8) == 0 &&
        ::getsockname(mSocket, reinterpret_cast<sockaddr*>(&address), &size) == 0) {
      mPort = ntohs(address.sin_port);
    }
  }
  ~Listener() { ::close(mSocket); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int Socket() const { return mSocket; }
  std::uint16_t Port() const { return mPort; }

 private:
  int mSocket;
  std::uint16_t mPort = 0;
};

/// Leads what the program sends to port 80 to another one. Installs itself over `real` for its lifetime.
class PortMap final : public http::ITransport {
 public:
  PortMap(http::ITransport& real, std::uint16_t port) : mReal(real), mPort(port) { http::Install(*this); }
  ~PortMap() override { http::Install(mReal); }
  PortMap(const PortMap&) = delete;
  PortMap& operator=(const PortMap&) = delete;

  std::unique_ptr<http::ISession> OpenSession(const std::string& agent) override {
    auto session = mReal.OpenSession(agent);
    return session ? std::make_unique<Session>(std::move(session), mPort) : nullptr;
  }

 private:
  struct Session final : http::ISession {
    Session(std::unique_ptr<http::ISession> what, std::uint16_t where) : real(std::move(what)), port(where) {}
    std::unique_ptr<http::IConnection> Connect(const std::string& server, std::uint16_t asked,
                                               const std::string& userName,
                                               const std::string& password) override {
      return real->Connect(server, asked == 80 ? port : asked, userName, password);
    }
    std::unique_ptr<http::ISession> real;
    std::uint16_t port;
  };

  http::ITransport& mReal;
  std::uint16_t mPort;
};

}  // namespace tarnwick::test
