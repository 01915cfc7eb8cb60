// The program's settings: module globals read from one INI file beside the program at start and
// written back at exit. There is no settings dialog.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace tarnwick {

class INIfile;

/// The chosen port's name, such as "COM5"; empty means that the user chose none.
extern std::string gComPort;

extern bool gDebugFilter4;   ///< The link library traces frames.
extern bool gDebugFilter6;   ///< The link library traces the port.
extern bool gModelOverride;  ///< A device's model is not compared with the package's.
extern bool gBlockOverride;  ///< The user is asked for the block size.
extern bool gTypeOverride;   ///< Accessories are offered; the firmware page checks no revisions.

extern std::string gDefaultURL;  ///< The built-in update site locator.
extern std::string gURL;         ///< The locator in use.
extern std::string DomainUser;
extern std::string DomainPassword;
extern std::string DomainName;
extern std::string DomainPath;
extern std::string DomainDir;

/// Folder of the firmware packages of the chosen device class, no trailing separator.
extern std::filesystem::path gFirmwareDir;
/// The settings document; there only during a read or a write of the file.
extern std::unique_ptr<INIfile> gIni;

/// The settings file: beside the program, under the program's own name.
std::filesystem::path SettingsPath();
/// Puts the globals to their defaults, then takes the keys that the file at `path` holds. A missing file, or
/// one that cannot be read, leaves the defaults. Notes the locator and its parts in the debug log.
void ReadSettingsFile(const std::filesystem::path& path);
/// Writes the globals to the file at `path`. A save that is not possible is lost without a message.
void WriteSettingsFile(const std::filesystem::path& path);

/// A locator in its parts. The form is [user ":" password "@"] host "/" path "/" file, where a
/// backslash counts as "/". Text without any "/" is all host; a ":" behind the "@" belongs to the host
/// and leaves the password empty.
struct UrlParts {
  std::string user;
  std::string password;
  std::string name;  ///< The host.
  std::string path;  ///< From the first "/" up to, not including, the last.
  std::string dir;   ///< From the last "/" to the end.
};
UrlParts SplitUrl(std::string_view locator);

/// The locator that applies when the settings file names none: 52 characters.
std::string BuiltInUrl();

}  // namespace tarnwick
