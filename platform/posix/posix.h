// What the files of this folder share.
#pragma once

#include <cerrno>
#include <system_error>

namespace tarnwick::posix {

/// The error that the last failed call of the system left.
inline std::error_code LastError() {
  return {errno, std::generic_category()};
}

}  // namespace tarnwick::posix
