// Servers on the loopback, at any free port.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>

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

/// From now on this port of the loopback is the proxy, which gets all that is asked.
inline void AskByWayOf(std::uint16_t port) {
  const std::string proxy = "127.0.0.1:" + std::to_string(port);
  for (const char* const name : {"http_proxy", "https_proxy"}) ::setenv(name, proxy.c_str(), 1);
  for (const char* const name : {"no_proxy", "NO_PROXY"}) ::unsetenv(name);
}

}  // namespace tarnwick::test
