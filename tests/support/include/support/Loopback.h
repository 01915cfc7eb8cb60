// Servers on the loopback, at any free port.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "support/TempFolder.h"

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

/// The web server nginx. Serves the folder `site` within its own folder, by the rules `locations` of nginx's
/// configuration.
class NginxProcess {
 public:
  explicit NginxProcess(const std::string& program, const std::string& locations = {}) {
    std::filesystem::create_directory(site);
    WriteFile(mFolder / "nginx.conf",
              "user root root; daemon off; master_process off; pid pid; events {} http { access_log off; "
              "client_body_temp_path temporary; proxy_temp_path temporary; fastcgi_temp_path temporary; "
              "uwsgi_temp_path temporary; scgi_temp_path temporary; server { listen 127.0.0.1:" +
                  std::to_string(port) + "; root site; " + locations + " } }");
    mPid = ::fork();
    if (mPid == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // whoever is killed leaves no server behind
      ::execl(program.c_str(), "nginx", "-p", mFolder.Path().c_str(), "-c", "nginx.conf", "-e", "errors",
              nullptr);
      ::_exit(127);
    }
    while (::waitpid(mPid, nullptr, WNOHANG) == 0 && !std::filesystem::exists(mFolder / "pid"))
      ::usleep(1000);
  }
  ~NginxProcess() {
    ::kill(mPid, SIGKILL);
    ::waitpid(mPid, nullptr, 0);
  }

 private:
  TempFolder mFolder;
  pid_t mPid = -1;

 public:
  const std::filesystem::path site = mFolder / "site";
  const std::uint16_t port = Listener().Port();
};

}  // namespace tarnwick::test
