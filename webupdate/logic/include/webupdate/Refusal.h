// Why the program does not renew itself.
#pragma once

#include <string>
#include <system_error>

namespace tarnwick {

enum class Refusal {
  None,
  OtherWindow,  ///< Another instance has the folder.
  NoLock,       ///< The folder cannot be locked.
  NoRelease,    ///< The catalogue offers none.
  NotFetched,   ///< A file of it cannot be had.
  NotTheFile,   ///< What came is not what the list names.
  NotSaved,     ///< The folder takes no files.
  NotStarted,   ///< Nothing could be started that waits for the end of this program.
};

/// A refusal, and what is known of its cause.
struct WhyNot {
  Refusal refusal = Refusal::None;
  std::string file = {};
  std::error_code cause = {};
};

/// In words, for the record.
std::string WhyNotText(const WhyNot& why);

}  // namespace tarnwick
