// A link library that drives nothing: results and filled words are told by the arguments.
#include <cstdint>
#include <cstring>

using Word = std::int32_t;
#define STUB extern "C" __attribute__((visibility("default"))) Word

namespace {
Word gTold = 0;  // What calls without a result were told; the serial mode gives it.
}

STUB _getDllVersion(Word* major, Word* minor, Word* build) {
  *major = 7;
  *minor = 8;
  *build = 9;
  return 0;
}
STUB _debugFilter(Word on, Word filter) {
  return gTold += 10 * on + filter;
}
STUB _initSerialCommon(const char* port) {
  return -static_cast<Word>(std::strlen(port));
}
STUB _getSerialMode() {
  return gTold;
}
STUB _lockHc() {
  return gTold += 100;
}
STUB _doTestForSkelmirra() {
  return 21;
}
STUB _doTestForUpgradeSupport() {
  return 22;
}
STUB _getModelCommon(Word address, Word* model) {
  return *model = address + 1;
}
STUB _getMcStateCommon(Word address, Word* major, Word* minor) {
  *major = address + 2;
  *minor = address + 3;
  return address + 4;
}
STUB _getHwRevCommon(Word address, Word* revision) {
  return *revision = address + 5;
}
STUB _getHwRevFromBootCommon(Word address, Word* revision) {
  return *revision = address + 6;
}
STUB _getVersionFromBootCommon(Word address, Word* version) {
  return *version = address + 7;
}
STUB _readMcProgMemCommon(Word address, Word first, Word last, Word* words) {
  for (Word word = first; word <= last; ++word) *words++ = word + address;
  return 1;
}
STUB _enterBootCommon(Word address) {
  return address + 8;
}
STUB _startProgrammingCommon(Word address) {
  return address + 9;
}
STUB _sendDataCommon(Word address, Word count, const Word* elements) {
  return address + elements[count - 1];
}
STUB _endProgrammingCommon(Word address) {
  return address + 10;
}
