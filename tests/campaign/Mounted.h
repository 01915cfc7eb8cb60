// The program's rules, the link library's core and the simulated mount's core in one process on virtual time,
// without windows: the face of the program is what the owner in it reads.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "linklib/LinkCore.h"
#include "mount/Console.h"
#include "support/VirtualLine.h"

namespace tarnwick::campaign {

/// The program was killed: thrown out of the call at which it happens.
struct Killed {};

/// The link library in this process. Told of each call by its name before it is made; where `onCall` says so,
/// the call fails and nothing reaches the mount.
class CoreLink final : public ILinkLibrary {
 public:
  using Word = std::int32_t;
  explicit CoreLink(test::VirtualLine& line) : mLine(line) { Restart(); }

  /// The library as a program that was started anew loads it.
  void Restart() { mCore = std::make_unique<wire::LinkCore>(mLine, mLine); }

  std::array<Word, 3> getDllVersion() override { return {1, 0, 0}; }
  void debugFilter(Word) override {}
  Word initSerialCommon(const std::string& port) override { return mCore->InitSerial(port); }
  Word getSerialMode() override { return mCore->SerialMode(); }
  void lockHc() override { mCore->LockHandControl(); }
  Word doTestForSkelmirra() override { return mCore->TestForVirtualPort(); }
  Word doTestForUpgradeSupport() override { return mCore->TestForUpgradeSupport(); }
  Word getModelCommon(Word address, Word& model) override {
    return Fails("model") ? 0 : mCore->GetModel(address, &model);
  }
  Word getMcStateCommon(Word address, Word& major, Word& minor) override {
    return Fails("state") ? 0 : mCore->GetState(address, &major, &minor);
  }
  Word getHwRevCommon(Word address, Word& revision) override {
    return Fails("revision") ? 0 : mCore->GetRevision(address, &revision);
  }
  Word getHwRevFromBootCommon(Word address, Word& revision) override {
    return Fails("boot-revision") ? 0 : mCore->GetBootRevision(address, &revision);
  }
  Word getVersionFromBootCommon(Word address, Word& version) override {
    return Fails("boot-version") ? -1 : mCore->GetBootVersion(address, &version);
  }
  Word readMcProgMemCommon(Word address, Word first, Word last, std::span<Word> words) override {
    return Fails("read") ? 0 : mCore->ReadMemory(address, first, last, words.data());
  }
  Word enterBootCommon(Word address) override { return Fails("enter") ? 0 : mCore->EnterBoot(address); }
  Word startProgrammingCommon(Word address) override {
    return Fails("start") ? 0 : mCore->StartProgramming(address);
  }
  Word sendDataCommon(Word address, std::span<const Word> elements) override {
    if (Fails("send")) return 0;
    return mCore->SendData(address, static_cast<Word>(elements.size()), elements.data());
  }
  Word endProgrammingCommon(Word address) override {
    return Fails("end") ? 0 : mCore->EndProgramming(address);
  }

  std::function<bool(const std::string& call)> onCall;

 private:
  bool Fails(const char* call) { return onCall && onCall(call); }

  test::VirtualLine& mLine;
  std::unique_ptr<wire::LinkCore> mCore;
};

/// A mount on a line, its faults, and the link library before it.
struct Rig {
  Rig()
      : faults(mount, line.line, [this](const std::string& told) {
          dark = dark || told.starts_with("power cut");
          line.hungUp = line.hungUp || (hangsUp && told.starts_with("cable pulled"));
        }) {}
  /// What an owner does who checks power and cable.
  void CheckPowerAndCable() {
    if (dark) faults.Power();
    faults.Plug();
    dark = line.hungUp = false;
  }

  mount::Mount mount;
  test::VirtualLine line{mount};
  bool dark = false;     ///< The mount's lamp is off.
  bool hangsUp = false;  ///< A pulled cable takes the port away; else it is silence.
  mount::Faults faults;
  CoreLink link{line};
};

}  // namespace tarnwick::campaign
