// Why a port could not be used, in words: for the user's eyes on the page, and for the record.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace tarnwick {

/// The device behind the port of that name, with links followed, and its product where the system knows it:
/// "/dev/ttyUSB0, FT232R". Empty where the name stands for none.
std::string PortText(const std::string& port);

/// What is known of an opening that gave `result`, -1 to -8, beyond the box that told it; in one line. `note`
/// is the link library's own word for it, and may be empty. Asks the system who holds the port of -1.
std::string OpeningHint(std::int32_t result, const std::string& note);

/// The hint of the last `OpenConnection` that failed; empty after one that did not.
const std::string& LastOpeningHint();

}  // namespace tarnwick
