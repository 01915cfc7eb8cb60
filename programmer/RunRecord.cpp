#include "programmer/RunRecord.h"

#include <array>
#include <cstdio>
#include <utility>

#include "firmware/QALclass.h"
#include "link/DeviceRecord.h"
#include "link/LinkLibrary.h"
#include "platform/contain.h"
#include "platform/program.h"

namespace tarnwick {
namespace {

std::string PackageText() {
  const QalIdentity& identity = gQAL->Identity();
  std::array<char, 16> crc{};
  std::snprintf(crc.data(), crc.size(), "%08X", identity.Crc);
  return "package: " + gQAL->RealFilename().filename().string() + ", " + std::to_string(identity.Size) +
         " bytes, CRC-32 " + crc.data();
}

}  // namespace

RunRecord::RunRecord(std::string work, std::vector<std::int32_t> rows)
    : mWork(std::move(work)), mRows(std::move(rows)) {
  Contain([this] {
    record::Line("run: " + mWork + " begins; Tarnwick " + program::VersionText() + ", " +
                 program::SystemText());
    if (!LoadedLibraryText().empty()) record::Line("link library: " + LoadedLibraryText());
    RecordLine();
    record::Line(PackageText());
    for (const std::int32_t row : mRows) RecordDevice(row);
  });
}

RunRecord::~RunRecord() {
  Contain([this] {
    const auto taken = std::chrono::steady_clock::now() - mBegin;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(taken).count();
    for (const std::int32_t row : mRows) RecordDevice(row);
    RecordLine();
    record::Line("run: " + mWork + " ends after " + std::to_string(seconds) + " s");
  });
}

}  // namespace tarnwick
