#include "Mount.h"

#include <algorithm>

#include "firmware/PackageFolder.h"
#include "firmware/QALclass.h"
#include "link/Bus.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "link/OpeningCause.h"
#include "platform/cli.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/serial.h"
#include "platform/ui.h"
#include "ports/ports.h"
#include "programmer/PackageFit.h"
#include "settings/Settings.h"
#include "webupdate/PackageSignature.h"

namespace tarnwick::flash {
namespace {

namespace fs = std::filesystem;

/// The one USB adapter among the ports; empty when there is none, or more than one.
std::string OnlyAdapter() {
  std::string only;
  for (const Port& port : PortsHere()) {
    if (!port.usb) continue;
    if (!only.empty()) return {};
    only = port.name;
  }
  return only;
}

}  // namespace

std::vector<Port> PortsHere() {
  std::vector<Port> found;
  const fs::path& folder = program::This().folder;
  for (int n = 1; n <= ports::kLastPort; ++n) {
    const std::string name = "COM" + std::to_string(n);
    if (!ports::PortExists(folder, name)) continue;
    const fs::path device = *ports::DeviceOf(folder, name);
    found.push_back({name, device, serial::IsUsb(device)});
  }
  return found;
}

Exit ReachMount(const Job& job) {
  if (!job.arguments.port.empty()) gComPort = job.arguments.port;
  if (gComPort.empty()) gComPort = OnlyAdapter();
  if (gComPort.empty()) {
    job.output.Note("Which port? Name one with --port; tarnwick-flash ports lists them.");
    return Exit::WrongUse;
  }
  if (FindDevices()) return job.user.IsEnding() ? Exit::Refused : Exit::Done;
  if (!LastOpeningHint().empty()) job.output.Note(LastOpeningHint());
  return IsConnected() ? Exit::Refused : Exit::LineFailed;
}

ChosenPackage::~ChosenPackage() {
  std::error_code ignored;
  if (!mTaken.empty()) fs::remove_all(mTaken, ignored);
}

fs::path ChosenPackage::TakeInput() {
  const std::string content = cli::ReadInput();
  if (content.empty()) return {};
  const fs::path folder = fs::temp_directory_path() / ("tarnwick-" + files::UniquePart());
  if (files::MakeFolder(folder)) return {};
  mTaken = folder;
  const fs::path file = folder / ("standard-input" + std::string(kPackageEnding));
  if (files::Create(file, content, fs::perms::owner_read | fs::perms::owner_write)) return {};
  return file;
}

/// A file of that name, else a package of the folder with or without its ending.
fs::path ChosenPackage::Locate() {
  const std::string& name = mJob.arguments.operand;
  if (name == "-") return TakeInput();
  if (fs::path(name).is_absolute()) return name;  // As `main` makes it where the file is there.
  const bool ended = name.ends_with(kPackageEnding);
  const fs::path found = FindPackage(gFirmwareDir, ended ? PackageStem(name) : name);
  return found.empty() ? fs::path(name) : found;
}

Exit ChosenPackage::Judge() {
  mPath = Locate();
  if (!AcceptSignature(LoadSigned(*gQAL, mPath))) return Exit::Refused;
  return PackageFits() ? Exit::Done : Exit::Refused;
}

void ChosenPackage::Reload() const {
  gQAL->LoadQALfile(mPath);
}

std::vector<std::int32_t> ChosenPackage::Rows() const {
  std::vector<std::int32_t> rows;
  const std::int32_t wanted = mJob.arguments.address;
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    const DeviceEntry& device = gDevices[row];
    if (device.QalIndex > 0 && (wanted == 0 || wanted == device.Address)) rows.push_back(row);
  }
  if (rows.empty()) mJob.output.Note("The package holds nothing for that device.");
  return rows;
}

}  // namespace tarnwick::flash
