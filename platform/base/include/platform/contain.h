// Containment of failures: one failed action is dropped and the next one runs.
#pragma once

#include <utility>

#include "platform/record.h"

namespace tarnwick {

/// Runs `action`; a failure raised in it goes no further than into the record. True when it ran to its end.
/// Wrap single actions, not sequences: what follows the failed action must still run.
template <class Action>
bool Contain(Action&& action) noexcept {
  try {
    std::forward<Action>(action)();
    return true;
  } catch (...) {
    record::Caught();
    return false;
  }
}

}  // namespace tarnwick
