// The program's allocations, made to fail on demand.
#pragma once

namespace tarnwick::test {

/// How many allocations still succeed before every one fails; negative, as at the start, for all.
extern int gAllocationsLeft;

}  // namespace tarnwick::test
