#include "programmer/BootLoader.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "firmware/BootPackages.h"
#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "programmer/ProgramDevice.h"

namespace tarnwick {
namespace {

BootLoaderCheck CheckBootWords(std::int32_t address) {
  constexpr std::array<std::int32_t, 3> kRenewed{0x160A, 0x158A, 0x2F00};
  std::array<std::int32_t, 3> words{};
  if (Link().readMcProgMemCommon(address, 0, 2, words) != 1) return BootLoaderCheck::NotNeeded;
  return words == kRenewed ? BootLoaderCheck::AsExpected : BootLoaderCheck::Outdated;
}

BootLoaderCheck CheckBootVersion(DeviceEntry& row) {
  std::int32_t version = 0;
  if (Link().getVersionFromBootCommon(row.Address, version) != 0) return BootLoaderCheck::NoAnswer;
  if (version != 1) return BootLoaderCheck::NotNeeded;
  // Version 1 gives no usable revision, yet the choice of boot package needs one.
  if (row.HwRevApp == 0) {
    row.HwRev = row.HwRevApp = row.HwRevBoot = gQAL->HwRevValue(1);
  } else {
    row.HwRev = row.HwRevApp;
  }
  return BootLoaderCheck::Outdated;
}

bool UserWantsUpgrade() {
  return ui::MessageBox(
             "Your BootLoader on this device needs to be upgraded before\r\n"
             "this version of firmware can be programmed.\r\n\r\n"
             "Would you like to upgrade your BootLoader and then continue\r\n"
             "on with programming your firmware?",
             ui::Buttons::YesNo, ui::Icon::Question) == ui::Answer::Yes;
}

struct PackageDevice {
  std::int32_t address;
  std::string name;
};

/// The devices of the selected package, in its order. A boot package holds one for each row; where
/// the selected one holds more, only those that a row is matched to are kept, so that each row
/// still finds its own.
std::vector<PackageDevice> DevicesToCarryOver() {
  const bool all = gQAL->Devices() <= gDevices.Count();
  std::vector<PackageDevice> devices;
  for (std::int32_t i = 1; i <= gQAL->Devices(); ++i) {
    const bool used = std::any_of(gDevices.begin(), gDevices.end(),
                                  [i](const DeviceEntry& row) { return row.QalIndex == i; });
    if (all || used) devices.push_back({gQAL->DeviceAddress(i), gQAL->DeviceName(i)});
  }
  return devices;
}

void LoadBootPackage(std::int32_t hwRev, const std::vector<PackageDevice>& devices) {
  const std::string text = hwRev == 5   ? BootUpdateText5()
                           : hwRev == 6 ? BootUpdateText6()
                                        : BootJumpFixText();
  gQAL->LoadQALfile({}, text);
  std::int32_t k = 0;
  for (const PackageDevice& device : devices) {
    if (++k > gQAL->Devices()) break;
    gQAL->DeviceAddress(k, device.address);
    gQAL->DeviceName(k, device.name);
  }
  MatchPackageDevices();
}

/// Whether the package just loaded again is the one that was chosen. Tells the user when it is not.
bool IsStill(const QalIdentity& chosen) {
  const std::string refusal = ChosenPackageRefusal(chosen);
  if (refusal.empty()) return true;
  ui::MessageBox(refusal);
  ui::PumpEvents();
  return false;
}

}  // namespace

BootLoaderCheck CheckBootLoader(std::int32_t index) {
  DeviceEntry& row = gDevices[index];
  if (row.HwRev == 2) return CheckBootWords(row.Address);
  if (HasBootVersion(row.HwRev)) return CheckBootVersion(row);
  return BootLoaderCheck::NotNeeded;
}

bool UpgradeBootLoader(std::int32_t index, std::string_view caption, std::filesystem::path packagePath,
                       IProgress& progress) {
  const std::int32_t hwRev = gDevices[index].HwRev;
  if (!HasBootVersion(hwRev) && !UserWantsUpgrade()) return false;
  const QalIdentity chosen = gQAL->Identity();
  LoadBootPackage(hwRev, DevicesToCarryOver());
  const bool written = ProgramDevice(index, caption, progress);
  gQAL->LoadQALfile(std::move(packagePath));
  MatchPackageDevices();
  return written && IsStill(chosen);
}

}  // namespace tarnwick
