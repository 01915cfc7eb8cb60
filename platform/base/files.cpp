// The words for what goes wrong with files beside the system's own.
#include "platform/files.h"

#include <array>

#include "beside.h"

namespace tarnwick::files {
namespace {

constexpr std::string_view kBesideEnding = ".new";
constexpr std::size_t kUniqueDigits = 16;

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

std::error_code Replace(const std::filesystem::path& path, std::string_view content) {
  Staged file(path);
  const std::error_code error = file.Write(content);
  return error ? error : file.Commit();
}

std::string UniquePart() {
  std::array<char, kUniqueDigits + 1> digits{};
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(RandomNumber()));
  return digits.data();
}

std::filesystem::path BesideName(const std::filesystem::path& target) {
  std::filesystem::path name = target;
  (name += "." + UniquePart()) += kBesideEnding;
  return name;
}

bool IsBeside(std::string_view name, std::string_view target) {
  if (name.size() != target.size() + 1 + kUniqueDigits + kBesideEnding.size()) return false;
  if (!name.starts_with(target) || name[target.size()] != '.' || !name.ends_with(kBesideEnding)) return false;
  return name.substr(target.size() + 1, kUniqueDigits).find_first_not_of("0123456789abcdef") ==
         std::string_view::npos;
}

}  // namespace tarnwick::files
