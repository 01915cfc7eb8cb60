// The exports of the link library. Each argument is a 32-bit word or a pointer; the number in an export's
// version is the count of its arguments' bytes, at four each. What results mean: linklib/LinkCore.h.
//
// The library is called on one thread and never calls back.
#include <algorithm>
#include <filesystem>
#include <string>

#include "linklib/LinkCore.h"
#include "linklib/Surroundings.h"
#include "platform/SharedLibrary.h"
#include "platform/program.h"

namespace {

using tarnwick::wire::LinkCore;

/// Longest port name that is looked at.
constexpr std::size_t kLongestName = 256;

/// The folder of the program, with the `ports/` in it: where this library lies, or the user's own.
std::filesystem::path OwnFolder() {
  const std::filesystem::path place = tarnwick::FolderOfCode(reinterpret_cast<const void*>(&OwnFolder));
  return tarnwick::program::FolderOf(place);
}

LinkCore& TheCore() {
  static tarnwick::wire::PortOpener opener(OwnFolder());
  static tarnwick::wire::SteadyClock clock;
  static LinkCore core(opener, clock, OwnFolder() / "Tarnwick.trace.txt");
  return core;
}

/// Nothing that is thrown inside leaves the library: it becomes the failure result.
template <class Action>
std::int32_t Guarded(std::int32_t failure, Action&& action) noexcept {
  try {
    return action(TheCore());
  } catch (...) {
    return failure;
  }
}

void Fill(std::int32_t* out, std::int32_t value) {
  if (out != nullptr) *out = value;
}

}  // namespace

#define TARNWICK_EXPORT extern "C" std::int32_t

TARNWICK_EXPORT _getDllVersion(std::int32_t* major, std::int32_t* minor, std::int32_t* build) {
  Fill(major, TARNWICK_LIBRARY_MAJOR);
  Fill(minor, TARNWICK_LIBRARY_MINOR);
  Fill(build, TARNWICK_LIBRARY_BUILD);
  return 1;
}

TARNWICK_EXPORT _debugFilter(std::int32_t on, std::int32_t filter) {
  return Guarded(0, [=](LinkCore& core) {
    core.DebugFilter(on, filter);
    return 1;
  });
}

TARNWICK_EXPORT _initSerialCommon(const char* port) {
  return Guarded(-1, [port](LinkCore& core) {
    if (port == nullptr) {
      core.InitSerial({});
      return -1;
    }
    return core.InitSerial(std::string(port, std::find(port, port + kLongestName, '\0')));
  });
}

TARNWICK_EXPORT _getSerialMode() {
  return Guarded(0, [](LinkCore& core) { return core.SerialMode(); });
}

TARNWICK_EXPORT _lockHc() {
  return Guarded(0, [](LinkCore& core) {
    core.LockHandControl();
    return 1;
  });
}

TARNWICK_EXPORT _doTestForSkelmirra() {
  return Guarded(1, [](LinkCore& core) { return core.TestForVirtualPort(); });
}

TARNWICK_EXPORT _doTestForUpgradeSupport() {
  return Guarded(1, [](LinkCore& core) { return core.TestForUpgradeSupport(); });
}

TARNWICK_EXPORT _getModelCommon(std::int32_t address, std::int32_t* model) {
  return Guarded(0, [=](LinkCore& core) { return core.GetModel(address, model); });
}

TARNWICK_EXPORT _getMcStateCommon(std::int32_t address, std::int32_t* major, std::int32_t* minor) {
  return Guarded(0, [=](LinkCore& core) { return core.GetState(address, major, minor); });
}

TARNWICK_EXPORT _getHwRevCommon(std::int32_t address, std::int32_t* revision) {
  return Guarded(0, [=](LinkCore& core) { return core.GetRevision(address, revision); });
}

TARNWICK_EXPORT _getHwRevFromBootCommon(std::int32_t address, std::int32_t* revision) {
  return Guarded(0, [=](LinkCore& core) { return core.GetBootRevision(address, revision); });
}

TARNWICK_EXPORT _getVersionFromBootCommon(std::int32_t address, std::int32_t* version) {
  return Guarded(-1, [=](LinkCore& core) { return core.GetBootVersion(address, version); });
}

TARNWICK_EXPORT _readMcProgMemCommon(std::int32_t address, std::int32_t first, std::int32_t last,
                                     std::int32_t* words) {
  return Guarded(0, [=](LinkCore& core) { return core.ReadMemory(address, first, last, words); });
}

TARNWICK_EXPORT _enterBootCommon(std::int32_t address) {
  return Guarded(0, [=](LinkCore& core) { return core.EnterBoot(address); });
}

TARNWICK_EXPORT _startProgrammingCommon(std::int32_t address) {
  return Guarded(0, [=](LinkCore& core) { return core.StartProgramming(address); });
}

TARNWICK_EXPORT _sendDataCommon(std::int32_t address, std::int32_t count, const std::int32_t* elements) {
  return Guarded(0, [=](LinkCore& core) { return core.SendData(address, count, elements); });
}

TARNWICK_EXPORT _endProgrammingCommon(std::int32_t address) {
  return Guarded(0, [=](LinkCore& core) { return core.EndProgramming(address); });
}

TARNWICK_EXPORT _getLinkNote(char* buffer, std::int32_t size) {
  return Guarded(0, [=](LinkCore& core) {
    const std::string note = core.Note();
    if (buffer != nullptr && size > 0) buffer[note.copy(buffer, static_cast<std::size_t>(size) - 1)] = '\0';
    return static_cast<std::int32_t>(note.size()) + 1;
  });
}
