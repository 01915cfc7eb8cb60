#include "World.h"

#include "support/TempFolder.h"

namespace tarnwick::campaign {
namespace fs = std::filesystem;

World::World(const Case& played, fs::path folder)
    : mCase(played), mFolder(std::move(folder)), mFaults(mMount, mLine.line, [this](const std::string& told) {
        mDark = mDark || told.starts_with("power cut");
        // A pulled cable takes the port away, or is silence.
        mLine.hungUp = mLine.hungUp || (mCase.fault == Fault::HangUp && told.starts_with("cable pulled"));
      }) {
  mMount.Link({.kind = mCase.handControl ? wire::LinkKind::HandControl : wire::LinkKind::Direct});
  for (std::size_t i = 0; i < static_cast<std::size_t>(mCase.devices); ++i) {
    mount::DeviceSetup setup{.model = mCase.model, .revision = mCase.revision, .claims = mCase.claims};
    setup.bootVersion = mCase.oldLoader[i] ? 1 : 2;
    if (mCase.firstVersion3) setup.major = 3, setup.minor = 0;
    mMount.Put(static_cast<std::uint8_t>(kAddresses[i]), setup);
  }
  mBefore = Snapshot();
  fs::create_directories(mFolder / "MotorControllers");
  fs::create_directory(mFolder / "ports");
  fs::create_symlink("/dev/null", mFolder / "ports/COM5");
  for (const std::string& name : PackageNames())
    test::WriteFile(mFolder / "MotorControllers" / (name + ".qal"), PackageOf(mCase, name));
  std::string settings = "[TARNWICK]\r\nCOMport=COM5\r\n";
  if (mCase.modelOverride) settings += "ModelOverride=True\r\n";
  if (mCase.typeOverride) settings += "TypeOverride=True\r\n";
  if (mCase.blockSize != 0) settings += "BlockOverride=True\r\n";
  test::WriteFile(mFolder / "Tarnwick.ini", settings);
}

/// All that a run can change in the mount.
std::string World::Snapshot() {
  std::string all;
  for (auto& [address, device] : mMount.Devices()) {
    all += std::to_string(static_cast<int>(device.State())) + std::to_string(device.BootVersion());
    for (std::uint32_t place = 0; place < 4; ++place) all += " " + std::to_string(device.Words().At(place));
    for (std::uint32_t word = 0; word <= kLastWord; ++word)
      all += " " + std::to_string(device.Words().ImageWord(word));
  }
  return all;
}

bool World::CheckPowerAndCable() {
  const bool dark = mDark;
  if (dark) mFaults.Power();
  mFaults.Plug();
  mDark = mLine.hungUp = false;
  return dark;
}

void World::Begins() {
  if (++mRuns == 2 && mCase.again) mFaults.Play("cut " + std::to_string(mCase.againAt));
}

bool World::Strike(const std::string& call, bool) {
  if (call == "send") StrikeBlock();
  const bool fails = mCase.fault == Fault::FailedCall && call == mCase.call && ++mKinds == mCase.count;
  mStruck = mStruck || fails;
  return fails;
}

void World::StrikeBlock() {
  if (++mBlocks != mCase.count) return;
  const fs::path path = mFolder / "MotorControllers/main.qal";
  switch (mCase.fault) {
    case Fault::Cut:
    case Fault::Pull:
    case Fault::HangUp:
      mFaults.Play((mCase.fault == Fault::Cut ? "cut " : "pull ") + std::to_string(mCase.byte));
      break;
    case Fault::Deleted:
      fs::remove(path);
      break;
    case Fault::Replaced:
      test::WriteFile(path, PackageOf(mCase, "main", true));
      break;
    default:
      return;
  }
  mStruck = true;
}

bool World::Holds(std::int32_t address, Variant variant) {
  const std::vector<std::int32_t> wanted = ImageOf(variant);
  mount::Memory& words = mMount.Devices().at(static_cast<std::uint8_t>(address)).Words();
  for (std::uint32_t word = 0; word < wanted.size(); ++word)
    if (words.ImageWord(word) != wanted[word]) return false;
  return true;
}

bool World::MotorWaits() {
  for (auto& [address, device] : mMount.Devices()) {
    bool whole = device.State() == mount::RunState::Running;
    for (Variant variant = 0; variant < kVariants; ++variant) whole = whole || Holds(address, variant);
    if (!whole) return true;
  }
  return false;
}

std::string World::Judge(const Report& report) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(mCase.devices); ++i) {
    const std::int32_t address = kAddresses[i];
    mount::Device& device = mMount.Devices().at(static_cast<std::uint8_t>(address));
    const auto written = report.written.find(address);
    if (written == report.written.end() || !Holds(address, written->second)) return "a wrong word";
    if (device.State() != mount::RunState::Running) return "does not run";
    const bool renews = mCase.revision == 2 || mCase.revision == 5 || mCase.revision == 6;
    if (device.BootVersion() != (renews || !mCase.oldLoader[i] ? 2 : 1)) return "a wrong boot loader";
  }
  return fs::exists(mFolder / "Tarnwick.unfinished") ? "a note of what was done" : "";
}

}  // namespace tarnwick::campaign
