#include "programmer/ProgramDevice.h"

#include <array>
#include <span>
#include <string>

#include "firmware/QALclass.h"
#include "link/DeviceRecord.h"
#include "link/Devices.h"
#include "link/LinkLibrary.h"
#include "platform/record.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "programmer/modProgrammer.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

void Tell(const std::string& text) {
  ui::MessageBox(text);
  ui::PumpEvents();
}

bool Fail(const std::string& text) {
  Tell(text);
  return false;
}

/// The same where a call of the link library failed, which the record tells more of.
bool FailCall(const std::string& text) {
  RecordLinkFailure(text);
  return Fail(text);
}

/// The programming of one device. Every step that answers false has told the user why.
class Run {
 public:
  Run(std::int32_t index, std::string_view caption, IProgress& progress)
      : mIndex(index),
        mQalIndex(gDevices[index].QalIndex),
        mAddress(gQAL->DeviceAddress(mQalIndex)),
        mText(std::string(caption) + gQAL->DeviceName(mQalIndex) + " : "),
        mProgress(progress) {
    gTotalWords = gQAL->DeviceWords(mQalIndex);
  }

  bool Execute();

 private:
  /// How sending ended.
  enum class Outcome { Sent, Restart, Stop };

  bool ReachBootLoader();
  bool AskBlockSize();
  bool ReachProgramState();
  bool WriteImage();
  Outcome SendImage();
  Outcome SendBlock(std::int32_t word);
  std::int32_t SendPacket(std::int32_t word);
  std::int32_t Slowly(std::int32_t (ILinkLibrary::*call)(std::int32_t address), const char* what);
  void Show(std::int32_t position) { ShowProgress(mText, position, mProgress); }

  const std::int32_t mIndex;
  const std::int32_t mQalIndex;
  const std::int32_t mAddress;
  const std::string mText;
  IProgress& mProgress;
  std::int32_t mBlockSize = 2;  ///< Words in one call: 1, 2 or 4.
};

bool Run::Execute() {
  Show(0);
  if (gCancelProgram) return false;  // Confirmed while the first progress was shown: nothing is erased.
  if (!ReachBootLoader()) return false;
  if (gBlockOverride && !AskBlockSize()) return false;
  if (!ReachProgramState()) return false;
  record::Line("writing: " + mText + std::to_string(gTotalWords + 1) + " words in blocks of " +
               std::to_string(mBlockSize));
  if (!WriteImage()) {
    gProgramming = false;
    return false;
  }
  if (Slowly(&ILinkLibrary::endProgrammingCommon, "checking ...") == 0) {
    return FailCall("Unable to end programming.");
  }
  Show(gTotalWords);
  return true;
}

/// Gets the boot loader to answer and takes the block size that suits it and the link.
bool Run::ReachBootLoader() {
  const DeviceEntry& row = gDevices[mIndex];
  if (row.State <= McState::NoResponse) return Fail("No response from MC");
  const bool entersByCall = row.State == McState::Running && row.HwRev >= 4;
  if (entersByCall && Link().enterBootCommon(mAddress) == 0) {
    return FailCall("Unable to enter boot.");
  }
  std::int32_t bootRevision = 0;
  if (Link().getHwRevFromBootCommon(mAddress, bootRevision) == 0) {
    return FailCall("Unable to enter boot.");
  }
  mBlockSize = Link().getSerialMode() == 2 || bootRevision != 0 ? 1 : 2;
  return true;
}

bool Run::AskBlockSize() {
  for (;;) {
    const std::string answer = ui::InputBox("Enter a Blocksize: (1, 2 or 4) ", "Blocksize Override",
                                            " " + std::to_string(mBlockSize));
    if (answer.empty()) return Fail("Programming Aborted - Device left in Boot mode!");
    const std::int32_t size = text::IsNumeric(answer) ? text::ToInt32(text::NumericPrefix(answer)) : 0;
    if (size == 1 || size == 2 || size == 4) {
      mBlockSize = size;
      return true;
    }
    ui::MessageBox("Invalid Blocksize specified!");
  }
}

bool Run::ReachProgramState() {
  ReadDeviceState(mIndex);
  const bool inBootMode = gDevices[mIndex].State == McState::BootMode;
  if (inBootMode && Slowly(&ILinkLibrary::startProgrammingCommon, "erasing ...") == 0) {
    return FailCall("Unable to start programming.");
  }
  ReadDeviceState(mIndex);
  return gDevices[mIndex].State == McState::Program || Fail("Unable to start programming.");
}

/// Sends the image, from its start again as often as the user wants. False when the run is to stop,
/// which leaves the device in program state.
bool Run::WriteImage() {
  for (;;) {
    const Outcome outcome = SendImage();
    if (outcome != Outcome::Restart) return outcome == Outcome::Sent;
    Show(0);
  }
}

Run::Outcome Run::SendImage() {
  const std::int32_t lastWord = gQAL->DeviceWords(mQalIndex);
  for (std::int32_t word = 0; word <= lastWord; word += mBlockSize) {
    if (!IsBlockBlank(mQalIndex, word, mBlockSize)) {
      const Outcome outcome = SendBlock(word);
      if (outcome != Outcome::Sent) return outcome;
    }
    if (word % 50 == 0) Show(word);
  }
  return Outcome::Sent;
}

Run::Outcome Run::SendBlock(std::int32_t word) {
  ui::PumpEvents();  // Here the user's cancel gets through.
  mProgress.Sending(word);
  Outcome outcome = Outcome::Sent;
  if (SendPacket(word) == 0) {
    RecordLinkFailure("writing word " + std::to_string(word));
    const ui::Answer answer =
        ui::MessageBox("An Error occurred Programming Data at Address: " + std::to_string(word) +
                           "\r\n\r\nIt is highly recommended to Restart Programming of this device\r\n\r\n"
                           "Would you like to Restart Programming?",
                       ui::Buttons::YesNo, ui::Icon::Critical);
    ui::PumpEvents();
    outcome = answer == ui::Answer::Yes ? Outcome::Restart : Outcome::Stop;
    if (outcome == Outcome::Stop) Tell("Programming Cancelled by User");
  }
  if (gCancelProgram) {
    outcome = Outcome::Stop;
    ui::PumpEvents();
  }
  return outcome;
}

/// Each element is a byte: the word index high byte first, then each word low byte first.
std::int32_t Run::SendPacket(std::int32_t word) {
  std::array<std::int32_t, 10> packet{word / 256, word % 256};
  std::size_t count = 2;
  for (std::int32_t k = 0; k < mBlockSize; ++k) {
    packet[count++] = gQAL->DeviceLoByte(mQalIndex, word + k).value_or(0);
    packet[count++] = gQAL->DeviceHiByte(mQalIndex, word + k).value_or(0);
  }
  return Link().sendDataCommon(mAddress, std::span(packet).first(count));
}

/// A call that a motor may need seconds for: what is waited for shows meanwhile.
std::int32_t Run::Slowly(std::int32_t (ILinkLibrary::*call)(std::int32_t address), const char* what) {
  mProgress.Waiting(what);
  const std::int32_t result = (Link().*call)(mAddress);
  mProgress.Waiting({});
  return result;
}

}  // namespace

bool ProgramDevice(std::int32_t index, std::string_view caption, IProgress& progress) {
  const std::string refusal = ImageRefusal(index);
  if (!refusal.empty()) return Fail(refusal);
  return Run(index, caption, progress).Execute();
}

bool IsBlockBlank(std::int32_t qalIndex, std::int32_t word, std::int32_t count) {
  for (std::int32_t k = word; k < word + count; ++k) {
    if (gQAL->DeviceLoByte(qalIndex, k) && gQAL->DeviceHiByte(qalIndex, k)) return false;
  }
  return true;
}

}  // namespace tarnwick
