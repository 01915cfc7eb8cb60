// A link library that drives nothing: results and filled words are told by the arguments.
#include <cstdint>

using Word = std::int32_t;
// clang-format off
#define STUB(name, parameters, result) extern "C" Word name parameters { return result; }
// clang-format on

static Word gTold = 0;  // What calls without a result were told; the serial mode gives it.

STUB(_getDllVersion, (Word * major, Word* minor, Word* build), (*major = 7, *minor = 8, *build = 9))
STUB(_debugFilter, (Word on, Word filter), gTold += 10 * on + filter)
STUB(_initSerialCommon, (const char* port), port[3] - '9')
STUB(_getSerialMode, (), gTold)
STUB(_lockHc, (), gTold += 100)
STUB(_doTestForSkelmirra, (), 21)
STUB(_doTestForUpgradeSupport, (), 22)
STUB(_getModelCommon, (Word address, Word* model), *model = address + 1)
STUB(_getMcStateCommon, (Word at, Word* major, Word* minor), (*major = at + 2, *minor = at + 3, at + 4))
STUB(_getHwRevCommon, (Word address, Word* revision), *revision = address + 5)
STUB(_getHwRevFromBootCommon, (Word address, Word* revision), *revision = address + 6)
STUB(_getVersionFromBootCommon, (Word address, Word* version), *version = address + 7)
STUB(_readMcProgMemCommon, (Word at, Word first, Word last, Word* w),
     (w[0] = at + first, w[last - first] = at + last, 1))
STUB(_enterBootCommon, (Word address), address + 8)
STUB(_startProgrammingCommon, (Word address), address + 9)
STUB(_sendDataCommon, (Word address, Word count, const Word* elements), address + elements[count - 1])
STUB(_endProgrammingCommon, (Word address), address + 10)
