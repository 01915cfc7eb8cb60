#include "app/ProgramSettings.h"

#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "link/LinkLibrary.h"
#include "platform/contain.h"
#include "platform/program.h"
#include "settings/Settings.h"

namespace tarnwick {

void LoadSettings() {
  std::error_code ignored;
  std::filesystem::current_path(program::This().folder, ignored);
  gQAL = std::make_unique<QALclass>(true);
  ReadSettingsFile(SettingsPath());
  if (gDebugFilter4) Link().debugFilter(4);
  if (gDebugFilter6) Link().debugFilter(6);
}

void SaveSettings() {
  Contain([] { WriteSettingsFile(SettingsPath()); });
  gQAL.reset();
  if (!gComPort.empty()) CloseConnection();
}

}  // namespace tarnwick
