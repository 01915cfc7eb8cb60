// The web server nginx, on a port of the loopback.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include "support/Loopback.h"
#include "support/TempFolder.h"

namespace tarnwick::test {

/// Serves the folder `site` within its own folder, by the rules `locations` of nginx's configuration.
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
