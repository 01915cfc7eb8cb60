// What the system knows of this process, and of its time.
#include <sys/utsname.h>

#include "platform/clock.h"
#include "platform/program.h"

namespace tarnwick {

std::filesystem::path program::RunningFile() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::string program::SystemText() {
  utsname system{};
  if (::uname(&system) != 0) return "an unknown system";
  return std::string(system.sysname) + " " + system.release + " " + system.machine;
}

std::optional<std::tm> clock::LocalTime(std::time_t moment) {
  std::tm local{};
  if (::localtime_r(&moment, &local) == nullptr) return std::nullopt;
  return local;
}

}  // namespace tarnwick
