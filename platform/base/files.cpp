// The words for what goes wrong with files beside the system's own.
#include "platform/files.h"

namespace tarnwick::files {
namespace {

class ProblemCategory final : public std::error_category {
 public:
  const char* name() const noexcept override { return "files"; }
  std::string message(int problem) const override {
    switch (static_cast<Problem>(problem)) {
      case Problem::NotOrdinary:
        return "It is no ordinary file";
      case Problem::TooLarge:
        return "It is larger than the program reads";
      case Problem::NoMemory:
        return "There is no memory for it";
      case Problem::Changed:
        return "It changed while it was read";
    }
    return "Unknown";
  }
};

}  // namespace

std::error_code make_error_code(Problem problem) {
  static const ProblemCategory category;
  return {static_cast<int>(problem), category};
}

std::optional<std::string> ReadWhole(const std::filesystem::path& path, std::uintmax_t limit) {
  std::error_code unsaid;
  return ReadWhole(path, limit, unsaid);
}

}  // namespace tarnwick::files
