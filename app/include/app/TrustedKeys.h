// The keys that this program was built with.
#pragma once

namespace tarnwick {

/// Takes the built-in key as the one that updates of the program, and packages, are signed with.
void TrustBuiltInKeys();

}  // namespace tarnwick
