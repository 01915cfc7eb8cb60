// What verifying a whole image takes on a line of 19200 baud, through the link library as it is shipped,
// held against the time that the image's own bytes need on that line.
#include <benchmark/benchmark.h>

#include <chrono>

#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "mount/MountProcess.h"
#include "programmer/Compatibility.h"
#include "programmer/Verify.h"
#include "support/PackageText.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/UnseenProgress.h"
#include "support/UserDouble.h"

namespace tarnwick::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kMotor = 16;
constexpr std::int32_t kWords = 4096;
constexpr int kSpeed = 19200;
/// Start bit, eight data bits and stop bit of each of its two bytes.
constexpr double kSecondsAWord = 2.0 * 10 / kSpeed;

/// Writes the image into the device in blocks of four words; false when a call fails.
bool Write(const test::ImageWords& image) {
  if (Link().enterBootCommon(kMotor) == 0 || Link().startProgrammingCommon(kMotor) == 0) return false;
  for (std::int32_t first = 0; first < kWords; first += 4) {
    std::array<std::int32_t, 10> block{first / 256, first % 256};
    for (std::int32_t i = 0; i < 4; ++i) {
      const std::int32_t word = image.at(first + i);
      block[static_cast<std::size_t>(2 + 2 * i)] = word % 256;
      block[static_cast<std::size_t>(3 + 2 * i)] = word / 256;
    }
    if (Link().sendDataCommon(kMotor, block) == 0) return false;
  }
  return Link().endProgrammingCommon(kMotor) != 0;
}

double SecondsOf(const std::function<bool()>& work, benchmark::State& state) {
  const auto start = std::chrono::steady_clock::now();
  if (!work()) state.SkipWithError("a call failed");
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Words read backwards, of which no run forms, so that each takes an exchange of its own.
bool ReadBackwards(std::int32_t words) {
  while (--words >= 0) {
    std::int32_t value = 0;
    if (Link().readMcProgMemCommon(kMotor, words, words, {&value, 1}) != 1) return false;
  }
  return true;
}

void Verify(benchmark::State& state) {
  constexpr std::int32_t kSample = 256;
  const test::TempFolder folder;
  mount::MountProcess mount;
  mount.Start(TARNWICK_MOUNT, folder / "ports/COM5", {"--revision", "5", "--baud", std::to_string(kSpeed)});
  fs::copy(TARNWICK_LIBRARY, folder / "Tarnwick.so");
  const std::unique_ptr<ILinkLibrary> library = LoadLinkLibrary(folder / "Tarnwick.so");
  Seam<ILinkLibrary>::Install(*library);
  const test::ImageWords image = test::CountedWords(kWords - 1);
  test::ResetGlobals();
  const test::UserDouble user;
  SetupDevices(0);
  gQAL->LoadQALfile({}, test::PackageText(5, "5", {{"Azm", kMotor, image}}));
  MatchPackageDevices();
  gDevices[1].HwRev = 5;
  mount.Ask("line paced=off");
  if (Link().initSerialCommon("COM5") != 0 || !Write(image)) state.SkipWithError("no image was written");
  mount.Ask("line paced=on");
  test::UnseenProgress progress;
  for ([[maybe_unused]] auto _ : state) {
    const double taken = SecondsOf([&] { return VerifyDevice(1, progress) == VerifyEnd::Identical; }, state);
    const double alone = SecondsOf([] { return ReadBackwards(kSample); }, state);
    state.SetIterationTime(taken);
    state.counters["payload"] = taken / (kWords * kSecondsAWord);
    state.counters["payload_alone"] = alone / (kSample * kSecondsAWord);
  }
  Seam<ILinkLibrary>::Uninstall();
}
BENCHMARK(Verify)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace tarnwick::bench

BENCHMARK_MAIN();
