// The link library's core in the place of the loaded library.
#pragma once

#include <functional>
#include <string>

#include "link/LinkLibrary.h"
#include "linklib/LinkCore.h"

namespace tarnwick::campaign {

/// Told of each call by its name before it is made; where `onCall` says so, the call fails and nothing
/// reaches the mount.
class CoreLink final : public ILinkLibrary {
 public:
  using Word = std::int32_t;
  CoreLink(wire::IPortOpener& opener, wire::IClock& clock) : mCore(opener, clock) {}

  std::array<Word, 3> getDllVersion() override { return {1, 0, 0}; }
  void debugFilter(Word) override {}
  Word initSerialCommon(const std::string& port) override { return mCore.InitSerial(port); }
  Word getSerialMode() override { return mCore.SerialMode(); }
  void lockHc() override { mCore.LockHandControl(); }
  Word doTestForSkelmirra() override { return mCore.TestForVirtualPort(); }
  Word doTestForUpgradeSupport() override { return mCore.TestForUpgradeSupport(); }
  Word getModelCommon(Word address, Word& model) override {
    return onCall("model") ? 0 : mCore.GetModel(address, &model);
  }
  Word getMcStateCommon(Word address, Word& major, Word& minor) override {
    return onCall("state") ? 0 : mCore.GetState(address, &major, &minor);
  }
  Word getHwRevCommon(Word address, Word& revision) override {
    return onCall("revision") ? 0 : mCore.GetRevision(address, &revision);
  }
  Word getHwRevFromBootCommon(Word address, Word& revision) override {
    return onCall("boot-revision") ? 0 : mCore.GetBootRevision(address, &revision);
  }
  Word getVersionFromBootCommon(Word address, Word& version) override {
    return onCall("boot-version") ? -1 : mCore.GetBootVersion(address, &version);
  }
  Word readMcProgMemCommon(Word address, Word first, Word last, std::span<Word> words) override {
    return onCall("read") ? 0 : mCore.ReadMemory(address, first, last, words.data());
  }
  Word enterBootCommon(Word address) override { return onCall("enter") ? 0 : mCore.EnterBoot(address); }
  Word startProgrammingCommon(Word address) override {
    return onCall("start") ? 0 : mCore.StartProgramming(address);
  }
  Word sendDataCommon(Word address, std::span<const Word> elements) override {
    if (onCall("send")) return 0;
    return mCore.SendData(address, static_cast<Word>(elements.size()), elements.data());
  }
  Word endProgrammingCommon(Word address) override {
    return onCall("end") ? 0 : mCore.EndProgramming(address);
  }

  std::function<bool(const std::string& call)> onCall;

 private:
  wire::LinkCore mCore;
};

}  // namespace tarnwick::campaign
