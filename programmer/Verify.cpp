#include "programmer/Verify.h"

#include <algorithm>
#include <optional>

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "link/DeviceRecord.h"
#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "platform/awake.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "programmer/RunRecord.h"
#include "programmer/modProgrammer.h"

namespace tarnwick {
namespace {

/// Top of the program memory; below revision 4 a device keeps the image's words 0 to 3 there.
constexpr std::int32_t kTopWords = 0xFFFC;

std::int32_t ReadWord(const DeviceEntry& row, std::int32_t wordAddress, std::int32_t& value) {
  return Link().readMcProgMemCommon(gQAL->DeviceAddress(row.QalIndex), wordAddress, wordAddress,
                                    std::span(&value, 1));
}

/// Reads until the device answers or the user gives up. False when the user did.
bool ReadWithRetry(const DeviceEntry& row, std::int32_t word, std::int32_t& value) {
  const std::int32_t wordAddress = row.HwRev < 4 && word < 4 ? kTopWords + word : word;
  while (ReadWord(row, wordAddress, value) != 1) {
    RecordLinkFailure("reading word " + std::to_string(word));
    const ui::Answer answer = ui::MessageBox("Error Verifying Data at Address: " + std::to_string(word),
                                             ui::Buttons::RetryCancel, ui::Icon::Exclamation);
    ui::PumpEvents();
    if (answer == ui::Answer::Retry) continue;
    ui::MessageBox("Verify Cancelled by User");
    ui::PumpEvents();
    return false;
  }
  return true;
}

VerifyEnd CompareWord(const DeviceEntry& row, std::int32_t word, std::int32_t& value) {
  ui::PumpEvents();
  if (!ReadWithRetry(row, word, value)) return VerifyEnd::Unread;
  const std::int32_t expected = gQAL->DeviceHiByte(row.QalIndex, word).value_or(0) * 256 +
                                gQAL->DeviceLoByte(row.QalIndex, word).value_or(0);
  if (value == expected) return VerifyEnd::Identical;
  ui::MessageBox("Found Difference at Address: " + std::to_string(word) + "\r\n\r\nValue of " +
                 std::to_string(value) + " should be " + std::to_string(expected));
  return VerifyEnd::Different;
}

/// Neither a word that no record gave nor one that was filled up is compared.
bool IsGiven(std::int32_t qalIndex, std::int32_t word) {
  return gQAL->DeviceLoByte(qalIndex, word) && !gQAL->DeviceNullPadded(qalIndex, word);
}

}  // namespace

std::string VerifyRefusal(std::int32_t index) {
  const DeviceEntry& row = gDevices[index];
  if (row.State != McState::Running) {
    return row.Name + ": Verify unsupported when firmware in State: " + row.StateName;
  }
  if (std::string refusal = ImageRefusal(index); !refusal.empty()) return refusal;
  if (!SupportsVerify(index)) return row.Name + ": Verify not supported for this version";
  if (row.Version != gQAL->DeviceVersion(row.QalIndex)) {
    return row.Name + ": Cannot Verify if Version Different!";
  }
  return {};
}

std::string VerifyRefusal(std::span<const std::int32_t> rows) {
  for (const std::int32_t row : rows) {
    if (std::string refusal = VerifyRefusal(row); !refusal.empty()) return refusal;
  }
  return {};
}

bool SupportsVerify(std::int32_t index) {
  std::int32_t value = 0;
  return ReadWord(gDevices[index], kTopWords, value) == 1;
}

VerifyEnd VerifyDevice(std::int32_t index, IProgress& progress) {
  const DeviceEntry& row = gDevices[index];
  const std::string text = "Verifying: " + gQAL->DeviceName(row.QalIndex) + " : ";
  gTotalWords = gQAL->DeviceWords(row.QalIndex);
  ShowProgress(text, 0, progress);
  std::int32_t value = 0;
  for (std::int32_t word = 0; word <= gTotalWords; ++word) {
    const VerifyEnd end = IsGiven(row.QalIndex, word) ? CompareWord(row, word, value) : VerifyEnd::Identical;
    if (word % 50 == 0) ShowProgress(text, word, progress);
    if (end != VerifyEnd::Identical) return end;
    ui::PumpEvents();
    if (gCancelVerify) {
      ui::MessageBox("Verify cancelled by user");
      return VerifyEnd::Cancelled;
    }
  }
  ShowProgress(text, gTotalWords, progress);
  return VerifyEnd::Identical;
}

VerifyEnd VerifyAll(std::span<const std::int32_t> rows, IProgress& progress) {
  const RunRecord inRecord("verifying", {rows.begin(), rows.end()});
  gVerifying = true;
  std::optional<awake::Hold> hold(std::in_place);
  progress.Busy(true);
  LockHandControl();
  VerifyEnd end = VerifyEnd::Identical;
  for (std::size_t at = 0; at < rows.size() && end == VerifyEnd::Identical; ++at) {
    progress.Turn(rows[at], static_cast<std::int32_t>(at) + 1, static_cast<std::int32_t>(rows.size()));
    end = VerifyDevice(rows[at], progress);
    progress.Rest();
  }
  hold.reset();
  gVerifying = false;
  progress.Busy(false);
  gCancelVerify = false;
  progress.Status();
  record::Line(end == VerifyEnd::Identical   ? "outcome: identical"
               : end == VerifyEnd::Different ? "outcome: not identical"
                                             : "outcome: not compared to the end");
  if (end != VerifyEnd::Identical) return end;
  ui::MessageBox("Contents are Identical", ui::Buttons::Ok, ui::Icon::Information);
  ui::PumpEvents();
  return end;
}

}  // namespace tarnwick
