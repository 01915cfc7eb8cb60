// The link library's core in the place of the loaded library, with a word before and after each call.
#pragma once

#include <functional>

#include "link/LinkLibrary.h"
#include "linklib/LinkCore.h"

namespace tarnwick::test {

/// Installs itself for its lifetime. What the exports add to the core, the passing of arguments, is left out.
class CoreLink final : public ILinkLibrary {
 public:
  /// A call that changes what a device holds or does, with its result: 1 when it was done.
  using Change = std::function<void(const char* name, std::int32_t address, std::int32_t result)>;

  explicit CoreLink(wire::LinkCore& core) : mCore(core) { Seam<ILinkLibrary>::Install(*this); }
  ~CoreLink() override { Seam<ILinkLibrary>::Uninstall(); }

  std::function<void()> before;  ///< Runs before each call.
  std::function<void()> after;   ///< Runs behind each call.
  Change changed;

  std::array<std::int32_t, 3> getDllVersion() override { return {1, 2, 3}; }
  void debugFilter(std::int32_t) override {}
  std::int32_t initSerialCommon(const std::string& port) override {
    return Call([&] { return mCore.InitSerial(port); });
  }
  std::int32_t getSerialMode() override { return mCore.SerialMode(); }
  void lockHc() override {
    Call([&] { return mCore.LockHandControl(), 0; });
  }
  std::int32_t doTestForSkelmirra() override { return mCore.TestForVirtualPort(); }
  std::int32_t doTestForUpgradeSupport() override {
    return Call([&] { return mCore.TestForUpgradeSupport(); });
  }
  std::int32_t getModelCommon(std::int32_t address, std::int32_t& model) override {
    return Call([&] { return mCore.GetModel(address, &model); });
  }
  std::int32_t getMcStateCommon(std::int32_t address, std::int32_t& major, std::int32_t& minor) override {
    return Call([&] { return mCore.GetState(address, &major, &minor); });
  }
  std::int32_t getHwRevCommon(std::int32_t address, std::int32_t& revision) override {
    return Call([&] { return mCore.GetRevision(address, &revision); });
  }
  std::int32_t getHwRevFromBootCommon(std::int32_t address, std::int32_t& revision) override {
    return Call([&] { return mCore.GetBootRevision(address, &revision); });
  }
  std::int32_t getVersionFromBootCommon(std::int32_t address, std::int32_t& version) override {
    return Call([&] { return mCore.GetBootVersion(address, &version); });
  }
  std::int32_t readMcProgMemCommon(std::int32_t address, std::int32_t first, std::int32_t last,
                                   std::span<std::int32_t> words) override {
    return Call([&] { return mCore.ReadMemory(address, first, last, words.data()); });
  }
  std::int32_t enterBootCommon(std::int32_t address) override {
    return Tell("enter", address, [&] { return mCore.EnterBoot(address); });
  }
  std::int32_t startProgrammingCommon(std::int32_t address) override {
    return Tell("start", address, [&] { return mCore.StartProgramming(address); });
  }
  std::int32_t endProgrammingCommon(std::int32_t address) override {
    return Tell("end", address, [&] { return mCore.EndProgramming(address); });
  }
  std::int32_t sendDataCommon(std::int32_t address, std::span<const std::int32_t> elements) override {
    const auto count = static_cast<std::int32_t>(elements.size());
    return Tell("send", address, [&] { return mCore.SendData(address, count, elements.data()); });
  }

 private:
  template <class Work>
  std::int32_t Call(Work&& work) {
    before();
    const std::int32_t result = work();
    after();
    return result;
  }
  template <class Work>
  std::int32_t Tell(const char* name, std::int32_t address, Work&& work) {
    const std::int32_t result = Call(work);
    changed(name, address, result);
    return result;
  }

  wire::LinkCore& mCore;
};

}  // namespace tarnwick::test
