#include "link/Connection.h"

#include <string>
#include <string_view>

#include "link/DeviceRecord.h"
#include "link/LinkLibrary.h"
#include "link/OpeningCause.h"
#include "platform/contain.h"
#include "platform/record.h"
#include "platform/ui.h"
#include "settings/Settings.h"

namespace tarnwick {
namespace {

constexpr std::int32_t kThroughHandControl = 2;

constexpr std::string_view kVirtualPort =
    "Tarnwick should not be connected to the Skelmirra virtual port.\r\n"
    "Make a direction connection to a real hand control instead.";
constexpr std::string_view kHandControlTooOld =
    "Hand control firmware does not support upgrade interface.\r\n"
    "Use your mount's PC Port or update the hand control to the latest version.";

bool gConnected = false;
std::string gHint;

/// Keeps what is known of an opening, for the page and for the record.
void NoteOpening(std::int32_t result) {
  gHint.clear();
  if (result == 0) return RecordLine();
  Contain([result] {
    const std::string cause = ReadLinkNote().cause;
    gHint = OpeningHint(result, cause);
    const std::string words = gHint.empty() ? "result " + std::to_string(result) : gHint;
    const std::string device = PortText(gComPort);
    record::Failure("opening " + gComPort + (device.empty() ? "" : " (" + device + ")"),
                    cause.empty() ? words : words + " (" + cause + ")");
  });
}

/// True when the port opened and a telescope answered on it. Any other result of the library than
/// those told is a failure without a message.
bool OpenPort() {
  const std::int32_t result = Link().initSerialCommon(gComPort);
  NoteOpening(result);
  if (result == -1) ui::MessageBox("Error Opening " + gComPort);
  if (result >= -8 && result <= -2) ui::MessageBox("No Telescope found on " + gComPort);
  gConnected = result == 0;
  return gConnected;
}

bool Refuse(std::string_view reason) {
  CloseConnection();
  ui::MessageBox(reason);
  return false;
}

}  // namespace

bool OpenConnection() {
  if (!OpenPort()) return false;
  if (Link().getSerialMode() != kThroughHandControl) return true;
  if (Link().doTestForSkelmirra() == 0) return Refuse(kVirtualPort);
  if (Link().doTestForUpgradeSupport() != 0) return Refuse(kHandControlTooOld);
  Link().lockHc();
  return true;
}

void CloseConnection() {
  Link().initSerialCommon("");
  gConnected = false;
}

const std::string& LastOpeningHint() {
  return gHint;
}

bool IsConnected() {
  return gConnected;
}

void LockHandControl() {
  if (Link().getSerialMode() == kThroughHandControl) Link().lockHc();
}

}  // namespace tarnwick
