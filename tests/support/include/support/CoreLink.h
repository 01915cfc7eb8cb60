// The link library's core in the place of the loaded library.
#pragma once

#include <functional>
#include <string>

#include "link/LinkLibrary.h"
#include "linklib/LinkCore.h"

namespace tarnwick::test {

/// Installs itself for its lifetime. What the exports add to the core, the passing of arguments, is left out.
class CoreLink final : public ILinkLibrary {
 public:
  using Word = std::int32_t;
  CoreLink(wire::IPortOpener& opener, wire::IClock& clock) : mCore(opener, clock) {
    Seam<ILinkLibrary>::Install(*this);
  }
  ~CoreLink() override { Seam<ILinkLibrary>::Uninstall(); }

  /// Told of each call before it is made, by its name; empty for those that are about no device. Where it
  /// says so, the call fails and nothing reaches the mount.
  std::function<bool(const std::string& call)> before;
  /// Told of it behind it.
  std::function<void(const std::string& call, Word address, Word result)> after;

  std::array<Word, 3> getDllVersion() override { return {1, 2, 3}; }
  void debugFilter(Word) override {}
  Word initSerialCommon(const std::string& port) override {
    return Call("", 0, [&] { return mCore.InitSerial(port); });
  }
  Word getSerialMode() override { return mCore.SerialMode(); }
  void lockHc() override {
    Call("", 0, [&] { return mCore.LockHandControl(), 0; });
  }
  Word doTestForSkelmirra() override { return mCore.TestForVirtualPort(); }
  Word doTestForUpgradeSupport() override {
    return Call("", 0, [&] { return mCore.TestForUpgradeSupport(); });
  }
  Word getModelCommon(Word address, Word& model) override {
    return Call("model", address, [&] { return mCore.GetModel(address, &model); });
  }
  Word getMcStateCommon(Word address, Word& major, Word& minor) override {
    return Call("state", address, [&] { return mCore.GetState(address, &major, &minor); });
  }
  Word getHwRevCommon(Word address, Word& revision) override {
    return Call("revision", address, [&] { return mCore.GetRevision(address, &revision); });
  }
  Word getHwRevFromBootCommon(Word address, Word& revision) override {
    return Call("boot-revision", address, [&] { return mCore.GetBootRevision(address, &revision); });
  }
  Word getVersionFromBootCommon(Word address, Word& version) override {
    return Call(
        "boot-version", address, [&] { return mCore.GetBootVersion(address, &version); }, -1);
  }
  Word readMcProgMemCommon(Word address, Word first, Word last, std::span<Word> words) override {
    return Call("read", address, [&] { return mCore.ReadMemory(address, first, last, words.data()); });
  }
  Word enterBootCommon(Word address) override {
    return Call("enter", address, [&] { return mCore.EnterBoot(address); });
  }
  Word startProgrammingCommon(Word address) override {
    return Call("start", address, [&] { return mCore.StartProgramming(address); });
  }
  Word endProgrammingCommon(Word address) override {
    return Call("end", address, [&] { return mCore.EndProgramming(address); });
  }
  Word sendDataCommon(Word address, std::span<const Word> elements) override {
    const auto count = static_cast<Word>(elements.size());
    return Call("send", address, [&] { return mCore.SendData(address, count, elements.data()); });
  }

 private:
  template <class Work>
  Word Call(const char* name, Word address, Work&& work, Word failed = 0) {
    const Word result = before && before(name) ? failed : work();
    if (after) after(name, address, result);
    return result;
  }

  wire::LinkCore mCore;
};

}  // namespace tarnwick::test
