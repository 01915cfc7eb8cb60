// The exports of Tarnwick.so. Each argument is a 32-bit word or a pointer; the number in an export's
// version is the count of its arguments' bytes, at four each. What results mean: tarnwick/Library.h.
//
// The library is called on one thread and never calls back.
#include <dlfcn.h>
#include <string.h>

#include <filesystem>

#include "tarnwick/Library.h"
#include "tarnwick/SerialPort.h"

namespace {

using tarnwick::wire::Library;

/// Longest port name that is looked at.
constexpr std::size_t kLongestName = 256;

/// The folder in which this library lies, with the `ports/` beside it.
std::filesystem::path OwnFolder() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<const void*>(&OwnFolder), &info) == 0 || info.dli_fname == nullptr) return {};
  return std::filesystem::absolute(info.dli_fname).parent_path();
}

Library& TheLibrary() {
  static tarnwick::wire::SerialPortOpener opener(OwnFolder());
  static tarnwick::wire::SteadyClock clock;
  static Library library(opener, clock, OwnFolder() / "Tarnwick.trace.txt");
  return library;
}

/// Nothing that is thrown inside leaves the library: it becomes the failure result.
template <class Action>
std::int32_t Guarded(std::int32_t failure, Action&& action) noexcept {
  try {
    return action(TheLibrary());
  } catch (...) {
    return failure;
  }
}

void Fill(std::int32_t* out, std::int32_t value) {
  if (out != nullptr) *out = value;
}

}  // namespace

#define TARNWICK_EXPORT extern "C" __attribute__((visibility("default"))) std::int32_t

TARNWICK_EXPORT _getDllVersion(std::int32_t* major, std::int32_t* minor, std::int32_t* build) {
  Fill(major, TARNWICK_LIBRARY_MAJOR);
  Fill(minor, TARNWICK_LIBRARY_MINOR);
  Fill(build, TARNWICK_LIBRARY_BUILD);
  return 1;
}

TARNWICK_EXPORT _debugFilter(std::int32_t on, std::int32_t filter) {
  return Guarded(0, [=](Library& library) {
    library.DebugFilter(on, filter);
    return 1;
  });
}

TARNWICK_EXPORT _initSerialCommon(const char* port) {
  return Guarded(-1, [port](Library& library) {
    if (port == nullptr) {
      library.InitSerial({});
      return -1;
    }
    return library.InitSerial(std::string(port, ::strnlen(port, kLongestName)));
  });
}

TARNWICK_EXPORT _getSerialMode() {
  return Guarded(0, [](Library& library) { return library.SerialMode(); });
}

TARNWICK_EXPORT _lockHc() {
  return Guarded(0, [](Library& library) {
    library.LockHandControl();
    return 1;
  });
}

TARNWICK_EXPORT _doTestForSkelmirra() {
  return Guarded(1, [](Library& library) { return library.TestForVirtualPort(); });
}

TARNWICK_EXPORT _doTestForUpgradeSupport() {
  return Guarded(1, [](Library& library) { return library.TestForUpgradeSupport(); });
}

TARNWICK_EXPORT _getModelCommon(std::int32_t address, std::int32_t* model) {
  return Guarded(0, [=](Library& library) { return library.GetModel(address, model); });
}

TARNWICK_EXPORT _getMcStateCommon(std::int32_t address, std::int32_t* major, std::int32_t* minor) {
  return Guarded(0, [=](Library& library) { return library.GetState(address, major, minor); });
}

TARNWICK_EXPORT _getHwRevCommon(std::int32_t address, std::int32_t* revision) {
  return Guarded(0, [=](Library& library) { return library.GetRevision(address, revision); });
}

TARNWICK_EXPORT _getHwRevFromBootCommon(std::int32_t address, std::int32_t* revision) {
  return Guarded(0, [=](Library& library) { return library.GetBootRevision(address, revision); });
}

TARNWICK_EXPORT _getVersionFromBootCommon(std::int32_t address, std::int32_t* version) {
  return Guarded(-1, [=](Library& library) { return library.GetBootVersion(address, version); });
}

TARNWICK_EXPORT _readMcProgMemCommon(std::int32_t address, std::int32_t first, std::int32_t last,
                                     std::int32_t* words) {
  return Guarded(0, [=](Library& library) { return library.ReadMemory(address, first, last, words); });
}

TARNWICK_EXPORT _enterBootCommon(std::int32_t address) {
  return Guarded(0, [=](Library& library) { return library.EnterBoot(address); });
}

TARNWICK_EXPORT _startProgrammingCommon(std::int32_t address) {
  return Guarded(0, [=](Library& library) { return library.StartProgramming(address); });
}

TARNWICK_EXPORT _sendDataCommon(std::int32_t address, std::int32_t count, const std::int32_t* elements) {
  return Guarded(0, [=](Library& library) { return library.SendData(address, count, elements); });
}

TARNWICK_EXPORT _endProgrammingCommon(std::int32_t address) {
  return Guarded(0, [=](Library& library) { return library.EndProgramming(address); });
}
