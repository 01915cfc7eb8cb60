// The three firmware packages that the program carries to renew a motor controller's boot loader.
// Each call assembles the whole text anew; it never reaches the disk.
#pragma once

#include <string>

namespace tarnwick {

/// For every revision but 5 and 6.
std::string BootJumpFixText();
/// For hardware revision 5.
std::string BootUpdateText5();
/// For hardware revision 6.
std::string BootUpdateText6();

}  // namespace tarnwick
