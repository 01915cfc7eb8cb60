// A web server for benchmarks.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "support/Loopback.h"
#include "support/TempFolder.h"

namespace tarnwick::bench {

/// The web server nginx. Serves the folder `site` within its own folder, at any free port.
class NginxProcess {
 public:
  explicit NginxProcess(const std::string& program) {
    std::filesystem::create_directory(site);
    test::WriteFile(
        mFolder / "nginx.conf",
        "user root root; daemon off; master_process off; pid pid; events {} http { access_log off; "
        "client_body_temp_path temporary; proxy_temp_path temporary; fastcgi_temp_path temporary; "
        "uwsgi_temp_path temporary; scgi_temp_path temporary; server { listen 127.0.0.1:" +
            std::to_string(port) + "; root site; } }");
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
  test::TempFolder mFolder;
  pid_t mPid = -1;

 public:
  const std::filesystem::path site = mFolder / "site";
  const std::uint16_t port = test::Listener().Port();
};

}  // namespace tarnwick::bench
