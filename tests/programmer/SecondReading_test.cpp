// A second, plain reading of a programming run, held against the first over random runs: the same calls,
// boxes, events and displays in the same order. TARNWICK_READINGS in the environment sets how many.
#include <cstdlib>
#include <random>

#include "ProgrammerFixture.h"
#include "firmware/BootPackages.h"
#include "link/Connection.h"
#include "platform/program.h"
#include "programmer/ProgrammingRun.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

using Rows = std::vector<std::int32_t>;

/// The run as it is told, step by step, in the order of the telling.
class PlainRun {
 public:
  explicit PlainRun(IProgress& progress) : mProgress(progress) {}

  void Click(const Rows& rows, bool together) {
    gProgramming = true, gCancelProgram = false;
    mProgress.Busy(true);
    bool ok = true;
    for (const std::int32_t row : rows) {
      if (!together || gDevices[row].Model != 1 || gDevices[row].Version != 3.0) continue;
      ui::MessageBox("Cannot Program more than one device at a time with V3.0");
      ok = false;
      break;
    }
    for (const std::int32_t row : rows) ok = ok && Check(row);
    LockHandControl();
    for (const std::int32_t row : rows) ok = ok && Work(row);
    gProgramming = false;
    mProgress.Busy(false);
    mProgress.Status();
    if (gCancelProgram || !ok) return;
    ui::MessageBox(
        "Programming Complete\r\n\r\nCycle the power on the telescope at this point, then press Ok.\r\n"
        "The controller(s) programmed should then be in Running State and\r\nthe proper Version "
        "displayed.",
        ui::Buttons::Ok, ui::Icon::Information);
    mProgress.Status();
    ui::PumpEvents();
  }

 private:
  static bool Refuse(const std::string& text) {
    ui::MessageBox(text);
    ui::PumpEvents();
    return false;
  }
  static bool Warn(const std::string& prefix, bool atRisk) {
    const std::string text = prefix +
                             "Warning: Motor Controller model can not be determined.\r\n\r\nEnsure that the "
                             "appropriate firmware is selected for the device being upgraded.\r\n\r\n" +
                             (atRisk ? "Choosing an incorrect model can cause the mount to become unusable "
                                       "--\r\n\r\ncontact Halcyrion "
                                       "technical support if you are unsure.\r\n\r\n"
                                     : "") +
                             "Do you wish to continue?";
    if (ui::MessageBox(text, ui::Buttons::YesNo, ui::Icon::Exclamation) == ui::Answer::Yes) return true;
    ui::PumpEvents();
    return false;
  }
  static bool Check(std::int32_t index) {
    ReadDeviceState(index);
    ReadDeviceHwRev(index);
    const DeviceEntry& row = gDevices[index];
    const std::string prefix = "[" + row.Name + "] ";
    if (gModelOverride || gDeviceClass != 0) return true;
    const bool running = row.State == McState::Running;
    const std::int32_t h = row.HwRev, m = row.Model, p = gQAL->ModelNumber();
    bool has = false;
    for (std::int32_t k = 1; k <= gQAL->HwRevCount(); ++k)
      has = has || gQAL->HwRevValue(k) == EffectiveHwRev(index);
    if (running && p != m) return Refuse(prefix + "Model number doesn't match QAL file Model Number");
    if (gQAL->HwRevCount() >= 1) {
      if (running && has) return true;
      if (!running && has) return h == 5 || h == 6 || Warn(prefix, true);
      const std::int32_t only = gQAL->HwRevCount() == 1 ? gQAL->HwRevValue(1) : 0;
      const bool untold = EffectiveHwRev(index) == 0 && (h == 5 || h == 6) && (only == 5 || only == 6);
      if (!running && untold) return true;
      return Refuse(prefix + "Hardware Revision doesn't match QAL file Hardware Revision");
    }
    const std::int32_t model = running ? m : p;
    if (h == 0 || (h == 2 && (model == 5 || model == 6))) return running || Warn(prefix, false);
    return Refuse(prefix + "Invalid Change in Hardware Revision ");
  }
  static std::int32_t CheckLoader(DeviceEntry& row) {
    if (row.HwRev == 2) {
      std::array<std::int32_t, 3> words{};
      if (Link().readMcProgMemCommon(row.Address, 0, 2, words) != 1) return -1;
      return words == std::array<std::int32_t, 3>{0x160A, 0x158A, 0x2F00} ? 1 : 0;
    }
    if (row.HwRev != 5 && row.HwRev != 6) return -1;
    std::int32_t v = 0;
    if (Link().getVersionFromBootCommon(row.Address, v) != 0) return 2;
    if (v != 1) return -1;
    // What nobody held against the device settles nothing, unless it leaves no choice.
    const std::int32_t first = gQAL->HwRevValue(1);
    if (row.HwRevApp == 0 && (gModelOverride || gDeviceClass != 0) &&
        (gQAL->HwRevCount() != 1 || (first != 5 && first != 6))) {
      ui::MessageBox("[" + row.Name + "] Hardware Revision doesn't match QAL file Hardware Revision");
      return 2;
    }
    if (row.HwRevApp == 0) row.HwRev = row.HwRevApp = row.HwRevBoot = first;
    row.HwRev = row.HwRevApp;
    return 0;
  }
  bool Work(std::int32_t row) {
    if (gCancelProgram) return false;
    const std::int32_t v = CheckLoader(gDevices[row]);
    if (v == 2) return false;
    if (v == 0) {
      const bool renewed = Upgrade(row);
      mProgress.Rest();
      if (!renewed) return false;
    }
    if (gCancelProgram) return false;
    const bool ok = Write(row, "Programming: ");
    mProgress.Rest();
    return ok;
  }
  bool Upgrade(std::int32_t index) {
    const std::int32_t h = gDevices[index].HwRev;
    if (h != 5 && h != 6 &&
        ui::MessageBox(
            "Your BootLoader on this device needs to be upgraded before\r\nthis version of firmware can be "
            "programmed.\r\n\r\nWould you like to upgrade your BootLoader and then continue\r\non with "
            "programming your firmware?",
            ui::Buttons::YesNo, ui::Icon::Question) != ui::Answer::Yes)
      return false;
    const std::filesystem::path path = gQAL->RealFilename();
    std::vector<std::pair<std::int32_t, std::string>> devices;
    for (std::int32_t i = 1; i <= gQAL->Devices(); ++i)
      if (gQAL->DeviceName(i) != "Hub") devices.push_back({gQAL->DeviceAddress(i), gQAL->DeviceName(i)});
    gQAL->LoadQALfile({}, h == 5 ? BootUpdateText5() : h == 6 ? BootUpdateText6() : BootJumpFixText());
    for (std::size_t i = 0; i < devices.size(); ++i) {
      gQAL->DeviceAddress(static_cast<std::int32_t>(i) + 1, devices[i].first);
      gQAL->DeviceName(static_cast<std::int32_t>(i) + 1, devices[i].second);
    }
    MatchPackageDevices();
    const bool r = Write(index, "Upgrading BootLoader: ");
    gQAL->LoadQALfile(path);
    MatchPackageDevices();
    return r;
  }
  bool Write(std::int32_t index, const std::string& caption) {
    const DeviceEntry& row = gDevices[index];
    const std::int32_t q = row.QalIndex, address = gQAL->DeviceAddress(q);
    gTotalWords = gQAL->DeviceWords(q);
    const std::string text = caption + gQAL->DeviceName(q) + " : ";
    ShowProgress(text, 0, mProgress);
    if (gCancelProgram) return false;
    if (row.State <= McState::NoResponse) return Refuse("No response from MC");
    std::int32_t r = 0;
    if (row.State == McState::Running && row.HwRev >= 4 && Link().enterBootCommon(address) == 0)
      return Refuse("Unable to enter boot.");
    if (Link().getHwRevFromBootCommon(address, r) == 0) return Refuse("Unable to enter boot.");
    std::int32_t size = Link().getSerialMode() == 2 || r != 0 ? 1 : 2;
    while (gBlockOverride) {
      const std::string answer =
          ui::InputBox("Enter a Blocksize: (1, 2 or 4) ", "Blocksize Override", " " + std::to_string(size));
      if (answer.empty()) return Refuse("Programming Aborted - Device left in Boot mode!");
      if (answer == "1" || answer == "2" || answer == "4") {
        size = std::stoi(answer);
        break;
      }
      ui::MessageBox("Invalid Blocksize specified!");
    }
    ReadDeviceState(index);
    if (row.State == McState::BootMode && Link().startProgrammingCommon(address) == 0)
      return Refuse("Unable to start programming.");
    ReadDeviceState(index);
    if (row.State != McState::Program) return Refuse("Unable to start programming.");
    bool ok = false, restart = true;
    while (!ok && restart) {
      ok = true, restart = false;
      for (std::int32_t w = 0; ok && w <= gQAL->DeviceWords(q); w += size) {
        Send(q, address, w, size, ok, restart);
        if (ok && w % 50 == 0) ShowProgress(text, w, mProgress);
      }
      if (!ok && restart) ShowProgress(text, 0, mProgress);
    }
    if (!ok) return gProgramming = false;
    if (Link().endProgrammingCommon(address) == 0) return Refuse("Unable to end programming.");
    ShowProgress(text, gTotalWords, mProgress);
    return true;
  }
  static void Send(std::int32_t q, std::int32_t address, std::int32_t w, std::int32_t size, bool& ok,
                   bool& restart) {
    ui::PumpEvents();
    std::vector<std::int32_t> packet{w / 256, w % 256};
    for (std::int32_t k = w; k < w + size; ++k) {
      packet.push_back(gQAL->DeviceLoByte(q, k).value_or(0));
      packet.push_back(gQAL->DeviceHiByte(q, k).value_or(0));
    }
    if (Link().sendDataCommon(address, packet) == 0) {
      const ui::Answer answer =
          ui::MessageBox("An Error occurred Programming Data at Address: " + std::to_string(w) +
                             "\r\n\r\nIt is highly recommended to Restart Programming of this "
                             "device\r\n\r\nWould you like to Restart "
                             "Programming?",
                         ui::Buttons::YesNo, ui::Icon::Critical);
      ui::PumpEvents();
      ok = false, restart = answer == ui::Answer::Yes;
      if (!restart) Refuse("Programming Cancelled by User");
    }
    if (!gCancelProgram) return;
    ok = restart = false;
    ui::PumpEvents();
  }

  IProgress& mProgress;
};

class SecondReading : public ProgrammerFixture {
 protected:
  using Random = std::mt19937;
  template <class Value>
  static Value One(Random& random, std::initializer_list<Value> of) {
    return *(of.begin() + random() % of.size());
  }

  static void DrawDevice(Random& random, ScriptedDevice& device) {
    device.state = One(random, {0, 1, 1, 1, 1, 2, 2, 3, 9});
    device.major = One(random, {3, 4}), device.model = One(random, {1, 5, 5, 5, 6});
    device.hwRev = One(random, {0, 2, 2, 3, 4, 5, 6}),
    device.bootHwRev = One(random, {0, 2, device.hwRev, 5});
    device.hwRevResult = random() % 16 == 0 ? 0 : 1, device.bootHwRevResult = random() % 16 == 0 ? 0 : 1;
    device.bootVersion = One(random, {0, 1, 1, 2}), device.bootVersionResult = random() % 16 == 0 ? -1 : 0;
    if (random() % 2 == 0) device.memory = {{0, 0x160A}, {1, 0x158A}, {2, One(random, {0x2F00, 0x2F01})}};
  }

  /// All that happens in the run of that seed, by one of the two readings.
  std::vector<std::string> Play(std::uint32_t seed, bool plain) {
    Random random(seed);
    ResetGlobals();
    SetupDevices(0);
    LinkDouble scripted;
    UserDouble answering;
    ProgressDouble display;
    gModelOverride = random() % 4 == 0, gTypeOverride = random() % 2 == 0, gBlockOverride = random() % 4 == 0;
    gDeviceClass = random() % 8 == 0 ? 1 : 0;
    scripted.serialMode = One(random, {0, 1, 2});
    scripted.readResult = random() % 16 == 0 ? 2 : 1;
    for (const std::int32_t address : {16, 17}) {
      DrawDevice(random, scripted.devices[address]);
    }
    // No row is for the first one, and so a boot package has no place for it.
    std::vector<PackageDevice> devices{{"Hub", 40, CountedWords(3)},
                                       {"Azm", 16, CountedWords(One(random, {3, 102}))},
                                       {"Alt", 17, CountedWords(3)}};
    std::rotate(devices.begin(), devices.begin() + static_cast<std::ptrdiff_t>(random() % 3), devices.end());
    WriteFile(path,
              PackageText(One(random, {5, 5, 5, 6, 1}),
                          One<std::string>(random, {"", "", "5", "6", "5,6", "2", "4,2", "0"}), devices));
    gQAL->LoadQALfile(path);
    MatchPackageDevices();
    for (std::int32_t round = 0; round < One(random, {1, 2}); ++round) {
      RefreshDevices();
      for (auto& [address, device] : scripted.devices)
        device.state = One(random, {device.state, device.state, 2});
    }
    for (const char* call : {"getMcState", "getHwRev", "getHwRevFromBoot", "getVersionFromBoot", "enterBoot",
                             "startProgramming", "sendData", "sendData", "endProgramming"})
      if (random() % 12 == 0) scripted.Fail(call, 1 + static_cast<int>(random() % 8), 0);
    for (int i = 0; i < 6; ++i) {
      answering.answers.push_back(One(random, {ui::Answer::Yes, ui::Answer::Yes, ui::Answer::No}));
      answering.inputAnswers.push_back(One<std::string>(random, {"1", "2", "4", "4", "3", "x", ""}));
    }
    // A cancel comes at any moment, behind a box, or behind the end of an image.
    const int moment = static_cast<int>(random() % 6), cancelAt = static_cast<int>(random() % 60);
    answering.onPump = [&] {
      const bool ended = !display.labels.empty() && display.labels.back().ends_with(" 100%");
      const bool now = moment == 0   ? answering.pumps == cancelAt
                       : moment == 1 ? !answering.boxes.empty()
                                     : moment == 2 && ended;
      gCancelProgram = gCancelProgram || now;
    };
    std::vector<std::string> events;
    const auto log = [&](const std::string& event) {
      events.push_back((event == "box" ? answering.LastBox() : event) + (gProgramming ? "" : ", at rest"));
    };
    scripted.log = answering.log = display.log = log;
    const Rows rows = One<Rows>(random, {{1, 2}, {1, 2}, {1}, {2}});
    if (plain) {
      PlainRun(display).Click(rows, rows.size() > 1);
    } else {
      ProgrammingRun(rows, rows.size() > 1, gQAL->Identity()).Execute(display);
    }
    for (const auto& block : scripted.blocks) events.push_back(testing::PrintToString(block));
    events.push_back(gProgramming ? "programming" : gCancelProgram ? "cancelled" : "at rest");
    return events;
  }

  TempFolder folder;
  /// No note can be written into the program's folder, which is not there.
  std::filesystem::path path = (program::Set({folder / "none", "Tarnwick", 2, 2, 4}), folder / "chosen.qal");
};

TEST_F(SecondReading, FindsTheSameInEveryRandomRun) {
  const char* const asked = std::getenv("TARNWICK_READINGS");
  const std::uint32_t readings = asked == nullptr ? 2000 : static_cast<std::uint32_t>(std::stoul(asked));
  std::uint32_t complete = 0, stopped = 0;
  for (std::uint32_t seed = 1; seed <= readings; ++seed) {
    const std::vector<std::string> first = Play(seed, false);
    ASSERT_EQ(first, Play(seed, true)) << seed;
    const auto has = [&first](std::string_view begin) {
      return std::any_of(first.begin(), first.end(),
                         [&](const auto& each) { return each.starts_with(begin); });
    };
    const bool whole = has("Ok i|Programming Complete");
    complete += whole ? 1 : 0;
    stopped += !whole && has("sendData") ? 1 : 0;
  }
  EXPECT_GT(complete, readings / 10);
  EXPECT_GT(stopped, readings / 20);
}

}  // namespace
}  // namespace tarnwick::test
