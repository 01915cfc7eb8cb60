// A scripted link library: every call logged, every result scripted, devices as plain values. What it simplifies:
// no time passes, each call succeeds in any state of its device, and what is sent changes no memory. A call that
// fails fills nothing, as its contract says.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "link/LinkLibrary.h"

namespace tarnwick::test {

/// What the double answers for one address.
struct ScriptedDevice {
  std::int32_t state = 1, major = 0, minor = 0;
  std::int32_t model = 0, modelResult = 1;
  std::int32_t hwRev = 0, hwRevResult = 1;
  std::int32_t bootHwRev = 0, bootHwRevResult = 1;
  std::int32_t bootVersion = 2, bootVersionResult = 0;
  std::map<std::int32_t, std::int32_t> memory{};  ///< Word address to value; absent words fail to read.
};

/// Installs itself for its lifetime. Calls are logged by name and arguments: "getMcState 16".
/// A running device goes to boot mode when entered, to program state when started, and back to boot
/// mode when ended, unless the call was made to fail.
class LinkDouble : public ILinkLibrary {
 public:
  LinkDouble() { Seam<ILinkLibrary>::Install(*this); }
  ~LinkDouble() override { Seam<ILinkLibrary>::Uninstall(); }

  /// Makes the nth call from now on (from 1) whose name is `name` fail with `result`.
  void Fail(const std::string& name, int nth, std::int32_t result = 0) {
    mFailures[name][mCounts[name] + nth] = result;
  }

  std::array<std::int32_t, 3> getDllVersion() override { return Log("getDllVersion", dllVersion); }
  void debugFilter(std::int32_t filter) override { Log("debugFilter " + std::to_string(filter), 0); }
  std::int32_t initSerialCommon(const std::string& port) override {
    return Log("initSerial " + port, port.empty() ? 0 : openResult);
  }
  std::int32_t getSerialMode() override { return Log("getSerialMode", serialMode); }
  void lockHc() override { Log("lockHc", 0); }
  std::int32_t doTestForSkelmirra() override { return Log("testSkelmirra", skelmirraResult); }
  std::int32_t doTestForUpgradeSupport() override { return Log("testUpgradeSupport", upgradeSupportResult); }
  std::int32_t getModelCommon(std::int32_t address, std::int32_t& model) override {
    const std::int32_t result = Answer("getModel", address, devices[address].modelResult);
    if ((result & 0xFFFF) == 1) model = devices[address].model;
    return result;
  }
  std::int32_t getMcStateCommon(std::int32_t address, std::int32_t& major, std::int32_t& minor) override {
    const ScriptedDevice& device = devices[address];
    const std::int32_t state = Answer("getMcState", address, device.state);
    if (state == 1) major = device.major, minor = device.minor;
    return state;
  }
  std::int32_t getHwRevCommon(std::int32_t address, std::int32_t& revision) override {
    const std::int32_t result = Answer("getHwRev", address, devices[address].hwRevResult);
    if (result != 0) revision = devices[address].hwRev;
    return result;
  }
  std::int32_t getHwRevFromBootCommon(std::int32_t address, std::int32_t& revision) override {
    const std::int32_t result = Answer("getHwRevFromBoot", address, devices[address].bootHwRevResult);
    if (result != 0) revision = devices[address].bootHwRev;
    return result;
  }
  std::int32_t getVersionFromBootCommon(std::int32_t address, std::int32_t& version) override {
    const std::int32_t result = Answer("getVersionFromBoot", address, devices[address].bootVersionResult);
    if (result == 0) version = devices[address].bootVersion;
    return result;
  }
  std::int32_t readMcProgMemCommon(std::int32_t address, std::int32_t first, std::int32_t last,
                                   std::span<std::int32_t> words) override {
    if (logTransfers)
      Log("read " + std::to_string(address) + " " + std::to_string(first) + " " + std::to_string(last), 0);
    const auto& memory = devices[address].memory;
    for (std::int32_t word = first; word <= last; ++word)
      if (!memory.contains(word)) return 0;
    for (std::int32_t word = first; readResult == 1 && word <= last; ++word)
      words[static_cast<std::size_t>(word - first)] = memory.at(word);
    return readResult;
  }
  std::int32_t enterBootCommon(std::int32_t address) override { return Move("enterBoot", address, 2); }
  std::int32_t startProgrammingCommon(std::int32_t address) override {
    return Move("startProgramming", address, 3);
  }
  std::int32_t endProgrammingCommon(std::int32_t address) override {
    return Move("endProgramming", address, 2);
  }
  std::int32_t sendDataCommon(std::int32_t address, std::span<const std::int32_t> elements) override {
    if (!logTransfers) return 1;
    blocks.emplace_back(elements.begin(), elements.end());
    return Answer("sendData", address, 1);
  }

  /// The calls so far, each ended by ";", and none from now on.
  std::string TakeCalls() {
    std::string taken;
    for (const std::string& call : std::exchange(calls, {})) taken += call + ";";
    return taken;
  }

  std::map<std::int32_t, ScriptedDevice> devices;
  std::array<std::int32_t, 3> dllVersion{1, 2, 3};
  std::int32_t readResult = 1;  ///< Of a read that finds its words.
  std::int32_t openResult = 0, serialMode = 0, skelmirraResult = 1, upgradeSupportResult = 0;

  std::vector<std::string> calls;
  std::vector<std::vector<std::int32_t>> blocks;  ///< Elements of each `sendData`.
  bool logTransfers = true;                       ///< Of blocks and reads. Off for benchmarks.
  std::function<void(const std::string&)> log;    ///< Told each call, for tests of one recorded order.

 private:
  template <class Result>
  Result Log(const std::string& call, Result result) {
    calls.push_back(call);
    if (log) log(call);
    return result;
  }
  /// What a call answers that would say `result` had it not been made to fail.
  std::int32_t Answer(const std::string& name, std::int32_t address, std::int32_t result) {
    Log(name + " " + std::to_string(address), 0);
    const auto& failures = mFailures[name];
    const auto hit = failures.find(++mCounts[name]);
    return hit == failures.end() ? result : hit->second;
  }
  std::int32_t Move(const std::string& name, std::int32_t address, std::int32_t state) {
    const std::int32_t result = Answer(name, address, 1);
    if (result == 1) devices[address].state = state;
    return result;
  }

  std::map<std::string, std::map<int, std::int32_t>> mFailures;
  std::map<std::string, int> mCounts;
};

}  // namespace tarnwick::test
