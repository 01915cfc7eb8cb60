// Writes the sample packages for the simulated mount: `make-samples FOLDER SITE`, where FOLDER is the
// portable folder and SITE the sources of the sample update site. The same bytes on every run. Where an
// image carries its version is told in docs/package-format.md.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/QalWriter.h"
#include "platform/contain.h"
#include "platform/files.h"

namespace {

using namespace tarnwick;

struct Sample {
  std::string folder;
  std::string name;      ///< Without extension.
  std::string recordId;  ///< Without the four digits of the version.
  std::uint16_t major;
  std::uint16_t minor;
  std::string fileVersion;
  std::string comments;
  std::int32_t model;
  std::string modelName;
  std::string hwRev;
  std::vector<std::string> devices;  ///< "name, address"
  std::size_t words;
  std::uint16_t mask;     ///< Bits of a program memory word.
  std::string note = {};  ///< Text of the note file; none when empty.
  bool damaged = false;   ///< One record in the middle gets a wrong checksum.
  bool portable = true;   ///< It is in the portable folder.
  bool site = false;      ///< The update site has it.
};

/// Stands in comments and notes: no real motor could run one of these images.
constexpr std::string_view kOnly = "Simulated mount only";

const std::vector<std::string> kBothMotors = {"AZM MOTOR, 16", "ALT MOTOR, 17"};

const std::vector<Sample> kSamples = {
    {"MotorControllers", "MC_0512", "MC_", 5, 12, "1.1", "Motor control 5.12", 5, "CORVANE", "", kBothMotors,
     1024, 0x3FFF},
    {"MotorControllers",
     "MC_0512_AZM",
     "MCA_",
     5,
     12,
     "1.1",
     "Motor control 5.12, azimuth only",
     5,
     "CORVANE",
     "",
     {"AZM MOTOR, 16"},
     300,
     0x3FFF},
    {"MotorControllers", "MC_0514", "MC_", 5, 14, "1.1", "Motor control 5.14", 5, "CORVANE", "", kBothMotors,
     4000, 0x3FFF, "Motor control 5.14\r\n\r\nQuieter slewing at full speed.\r\n", false, false, true},
    {"MotorControllers", "MC_0513_DAMAGED", "MC_", 5, 13, "1.1", "Damaged on purpose", 5, "CORVANE", "",
     kBothMotors, 300, 0x3FFF, "", true},
    {"MotorControllers", "MCM_0730", "MCM_", 7, 30, "1.2", "Motor control M 7.30", 14, "CORVANEM", "5",
     kBothMotors, 600, 0xFFFF,
     "Motor control M 7.30\r\n\r\nSmoother tracking at sidereal rate.\r\nFor hardware revision 5 only.\r\n",
     false, true, true},
    {"MotorControllers", "MCPRO_0731", "MCP_", 7, 31, "1.2", "Motor control Pro 7.31", 13, "CORVANEPRO", "6",
     kBothMotors, 600, 0xFFFF},
    {"Accessories",
     "FOCUS_0104",
     "FOC_",
     1,
     4,
     "1.1",
     "Focuser 1.04",
     1,
     "FOCUSER",
     "",
     {"FOCUSER MOTOR, 18", "FDR MOTOR, 19"},
     300,
     0x3FFF},
    {"Accessories",
     "FOCUS_0105",
     "FOC_",
     1,
     5,
     "1.1",
     "Focuser 1.05",
     1,
     "FOCUSER",
     "",
     {"FOCUSER MOTOR, 18", "FDR MOTOR, 19"},
     300,
     0x3FFF,
     "Focuser 1.05\r\n",
     false,
     false,
     true},
};

constexpr std::size_t kVersionPlace = 8;
constexpr std::size_t kRecordWords = 8;
/// The records left out of each image.
constexpr std::size_t kGapBegin = 160;
constexpr std::size_t kGapEnd = 176;

std::vector<std::uint16_t> ImageOf(const Sample& sample) {
  std::vector<std::uint16_t> image(sample.words);
  std::uint32_t state =
      static_cast<std::uint32_t>(sample.model) * 1000003u + sample.major * 100u + sample.minor;
  for (std::uint16_t& word : image) {
    state = state * 1664525u + 1013904223u;
    word = static_cast<std::uint16_t>((state >> 16) & sample.mask);
  }
  const std::array<std::uint16_t, 4> version = {0x1A5A, 0x25A5, sample.major, sample.minor};
  std::copy(version.begin(), version.end(), image.begin() + kVersionPlace);
  return image;
}

std::string RecordsOf(const Sample& sample) {
  const std::vector<std::uint16_t> image = ImageOf(sample);
  std::string records;
  for (std::size_t first = 0; first < image.size(); first += kRecordWords) {
    if (first >= kGapBegin && first < kGapEnd) continue;
    std::vector<std::uint8_t> bytes;
    for (std::size_t word = first; word < std::min(first + kRecordWords, image.size()); ++word) {
      bytes.push_back(static_cast<std::uint8_t>(image[word] & 0xFF));
      bytes.push_back(static_cast<std::uint8_t>(image[word] >> 8));
    }
    std::string line = QalHexLine(static_cast<std::uint16_t>(first * 2), bytes);
    if (sample.damaged && first == kGapEnd) {
      char& checkSum = line[line.size() - 3];
      checkSum = checkSum == '0' ? '1' : '0';
    }
    records += line;
  }
  return records;
}

std::string PackageOf(const Sample& sample) {
  std::string recordId = sample.recordId;
  for (const int part : {sample.major / 10, sample.major % 10, sample.minor / 10, sample.minor % 10}) {
    recordId += static_cast<char>('0' + part);
  }
  std::vector<std::string> devices;
  for (const std::string& device : sample.devices) devices.push_back(device + ", " + recordId);
  return QalHeaderText({.FileVersion = sample.fileVersion,
                        .Filename = sample.name + ".qal",
                        .FileDate = "2024.03.05",
                        .Comments = std::string(kOnly) + ": " + sample.comments,
                        .ModelNumber = sample.model,
                        .ModelName = sample.modelName,
                        .HwRev = sample.hwRev,
                        .Devices = devices}) +
         QalBlock(recordId, RecordsOf(sample));
}

bool Write(const std::filesystem::path& path, std::string_view content) {
  const std::error_code error = files::Replace(path, content);
  if (error) std::fprintf(stderr, "%s: %s\n", path.string().c_str(), error.message().c_str());
  return !error;
}

bool WriteSample(const Sample& sample, const std::filesystem::path& home) {
  const std::filesystem::path folder = home / sample.folder;
  std::filesystem::create_directories(folder);
  if (!Write(folder / (sample.name + ".qal"), PackageOf(sample))) return false;
  return sample.note.empty() ||
         Write(folder / (sample.name + ".txt"), std::string(kOnly) + ".\r\n\r\n" + sample.note);
}

bool WriteSamples(const std::filesystem::path& portable, const std::filesystem::path& site) {
  return std::all_of(kSamples.begin(), kSamples.end(), [&](const Sample& sample) {
    return (!sample.portable || WriteSample(sample, portable)) && (!sample.site || WriteSample(sample, site));
  });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: make-samples FOLDER SITE\n", stderr);
    return 2;
  }
  bool written = false;
  const bool ended = Contain([&] { written = WriteSamples(argv[1], argv[2]); });
  return ended && written ? 0 : 1;
}
