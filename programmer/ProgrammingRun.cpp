#include "programmer/ProgrammingRun.h"

#include <algorithm>

#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "platform/ui.h"
#include "programmer/BootLoader.h"
#include "programmer/Compatibility.h"
#include "programmer/ProgramDevice.h"

namespace tarnwick {
namespace {

bool RenewBootLoader(std::int32_t row, IProgress& progress, const std::function<void()>& restoreFrame) {
  switch (CheckBootLoader(row)) {
    case BootLoaderCheck::NotNeeded:
    case BootLoaderCheck::AsExpected:
      return true;
    case BootLoaderCheck::NoAnswer:
      return false;
    case BootLoaderCheck::Outdated:
      break;
  }
  const bool renewed = UpgradeBootLoader(row, "Upgrading BootLoader: ", gQAL->RealFilename(), progress);
  restoreFrame();
  return renewed;
}

bool ProgramRow(std::int32_t row, IProgress& progress, const std::function<void()>& restoreFrame) {
  if (!RenewBootLoader(row, progress, restoreFrame)) return false;
  const bool written = ProgramDevice(row, "Programming: ", progress);
  restoreFrame();
  return written;
}

}  // namespace

bool AllowedTogether(std::span<const std::int32_t> rows) {
  const bool allowed = std::none_of(rows.begin(), rows.end(), [](std::int32_t row) {
    return gDevices[row].Model == 1 && gDevices[row].Version == 3.0;
  });
  if (!allowed) ui::MessageBox("Cannot Program more than one device at a time with V3.0");
  return allowed;
}

bool CheckAll(std::span<const std::int32_t> rows) {
  return std::all_of(rows.begin(), rows.end(), CheckCompatibility);
}

bool ProgramAll(std::span<const std::int32_t> rows, IProgress& progress,
                const std::function<void()>& restoreFrame) {
  return std::all_of(rows.begin(), rows.end(),
                     [&](std::int32_t row) { return ProgramRow(row, progress, restoreFrame); });
}

}  // namespace tarnwick
