#include "programmer/modProgrammer.h"

namespace tarnwick {

bool gVerifying = false;
bool gCancelVerify = false;
bool gProgramming = false;
bool gCancelProgram = false;
std::int32_t gTotalWords = 0;

}  // namespace tarnwick
