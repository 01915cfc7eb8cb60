#include "webupdate/BatchText.h"

#include "webupdate/SelfUpdate.h"

namespace tarnwick {

std::string BatchText(const Catalogue& catalogue, const std::string& programDirectory,
                      const std::string& executableName) {
  const auto quoted = [](const std::string& text) { return "\"" + text + "\""; };
  const auto inFolder = [&](const std::string& name) { return quoted(programDirectory + "\\" + name); };
  std::string waiting;
  std::string renaming;
  for (std::int32_t i = 1; i <= catalogue.ProgramCount(); ++i) {
    const ProgramEntry& entry = catalogue.Programs(i);
    if (!entry.Newer) continue;
    waiting += "IF NOT EXIST " + inFolder(entry.LocalName) + " GOTO DONE\r\n";
    waiting += "ERASE " + inFolder(entry.Name) + "\r\n";
    waiting += "IF EXIST " + inFolder(entry.Name) + " GOTO RETRY\r\n";
    renaming += "RENAME " + inFolder(entry.LocalName) + " " + quoted(entry.Name) + "\r\n";
  }
  const std::string program = inFolder(executableName + std::string(kProgramEnding));
  return "@ECHO OFF\r\n:RETRY\r\n" + waiting + renaming +
         "CLS\r\n"
         "ECHO Upgrade Complete.\r\n"
         "ECHO If this window remains open when finished, it is safe to close.\r\n"
         "START " +
         program + " " + program + "\r\n:DONE\r\nERASE " + inFolder("WebUpdate.bat");
}

}  // namespace tarnwick
