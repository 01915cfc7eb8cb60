// The loader against the plain reader: `packages-campaign [SHARE]` tries each SHARE-th of all faults.
//
// Every file that there is cut at each byte, every byte of the small ones replaced by each other byte,
// and 10,000 packages made up and damaged. The first text on which the readers differ is left behind
// as packages-campaign.qal.
#include <algorithm>
#include <array>
#include <random>

#include "firmware/BootPackages.h"
#include "firmware/QalWriter.h"
#include "support/PlainReader.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

constexpr std::size_t kSmall = 160;
std::mt19937 gRandom(20041);
std::size_t gShare = 1;
std::array<std::size_t, 9> gOutcomes{};  ///< How often each error number came out.

std::size_t Below(std::size_t count) {
  return gRandom() % count;
}
void Try(const std::string& text) {
  if (Below(gShare) != 0) return;
  const std::optional<std::int32_t> error = Agreed(text);
  if (error) ++gOutcomes[static_cast<std::size_t>(*error)];
  if (error) return;
  WriteFile("packages-campaign.qal", text);
  std::puts("The readers differ on packages-campaign.qal.");
  std::exit(1);
}

void CutAndReplace(const std::string& file) {
  for (std::size_t at = 0; at <= file.size(); ++at) Try(file.substr(0, at));
  for (std::size_t at = 0; at < file.size() && file.size() < kSmall; ++at) {
    for (int byte = 0; byte < 256; ++byte) {
      Try(std::string(file).replace(at, 1, 1, static_cast<char>(byte)));
    }
  }
}

/// Lines of all files, and records for all places, with a few faults.
std::string MadeAndDamaged(const std::vector<std::string>& files) {
  std::string text;
  for (std::size_t lines = Below(30); lines > 0; --lines) {
    const std::string& file = files[Below(files.size())];
    const std::size_t at = file.find("\r\n", Below(file.size())) + 2;
    text += at < 2 ? file : file.substr(at, file.find("\r\n", at) + 2 - at);
    std::vector<std::uint8_t> bytes(Below(4) == 0 ? Below(256) : Below(20));
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(gRandom());
    const auto address = static_cast<std::uint16_t>(Below(32) == 0 ? gRandom() : Below(300));
    if (Below(2) == 0) text += QalHexLine(address, bytes);
  }
  for (std::size_t faults = Below(4); faults > 0 && !text.empty(); --faults) {
    const std::string some = text.substr(Below(text.size()), Below(20));
    text.replace(Below(text.size()), Below(3),
                 Below(2) == 0 ? some : std::string(1, "=:,\r\n\xFF 5"[Below(8)]));
  }
  if (Below(2) == 0) RepairCheckSums(text);
  return text;
}

}  // namespace
}  // namespace tarnwick::test

int main(int argc, char** argv) {
  using namespace tarnwick::test;
  if (argc > 1) gShare = std::stoul(argv[1]);
  std::vector<std::string> files = {tarnwick::BootJumpFixText(), tarnwick::BootUpdateText5(),
                                    tarnwick::BootUpdateText6()};
  for (const char* folder : {TARNWICK_CORPUS, TARNWICK_PORTABLE}) {
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
      if (file.path().extension() == ".qal") files.push_back(ReadFile(file.path()));
    }
  }
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) CutAndReplace(file);
  for (int i = 0; i < 10'000; ++i) Try(MadeAndDamaged(files));
  std::printf("Both readers make the same of all packages, by error number from 0:");
  for (const std::size_t count : gOutcomes) std::printf(" %zu", count);
  std::puts("");
  return std::count(gOutcomes.begin(), gOutcomes.end(), 0u) > 1;  // all seen but for the file not found
}
