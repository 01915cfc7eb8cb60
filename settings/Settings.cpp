#include "settings/Settings.h"

#include <algorithm>
#include <array>

#include "platform/contain.h"
#include "platform/modDebug.h"
#include "platform/program.h"
#include "platform/text.h"
#include "settings/INIfile.h"

namespace tarnwick {
namespace {

/// The locator that was chosen at configuring, each code one higher, so that it does not show in the program
/// file.
template <std::size_t Size>
consteval std::array<char, Size - 1> Scrambled(const char (&text)[Size]) {
  std::array<char, Size - 1> scrambled{};
  for (std::size_t i = 0; i < scrambled.size(); ++i) scrambled[i] = static_cast<char>(text[i] + 1);
  return scrambled;
}

constexpr std::string_view kGroup = "[TARNWICK]";

template <bool& flag>
bool Get() {
  return flag;
}
template <bool& flag>
void Set(bool on) {
  flag = on;
}

/// A key that is true or false. A name is read in upper case and written as it stands.
struct BooleanKey {
  std::string_view name;
  bool writtenWhenFalse;
  bool (*get)();
  void (*set)(bool);
};

/// In the order in which they are written.
constexpr std::array<BooleanKey, 6> kBooleanKeys{{
    {"DebugFilter4", true, Get<gDebugFilter4>, Set<gDebugFilter4>},
    {"DebugFilter6", true, Get<gDebugFilter6>, Set<gDebugFilter6>},
    {"DebugFilter10", false, DebugEnabled, SetDebugEnabled},
    {"ModelOverride", false, Get<gModelOverride>, Set<gModelOverride>},
    {"BlockOverride", false, Get<gBlockOverride>, Set<gBlockOverride>},
    {"TypeOverride", false, Get<gTypeOverride>, Set<gTypeOverride>},
}};

constexpr std::string_view kPortKey = "COMport";
constexpr std::string_view kUrlKey = "URL";

void TakeKey(const std::string& key, const std::string& value) {
  if (key == text::Upper(kPortKey)) gComPort = text::Upper(value);
  if (key == kUrlKey) gURL = value;
  for (const BooleanKey& known : kBooleanKeys) {
    if (key == text::Upper(known.name)) known.set(text::Upper(value) == "TRUE");
  }
}

void TakeUrlParts() {
  UrlParts parts = SplitUrl(gURL);
  DomainUser = std::move(parts.user);
  DomainPassword = std::move(parts.password);
  DomainName = std::move(parts.name);
  DomainPath = std::move(parts.path);
  DomainDir = std::move(parts.dir);
  DebugLog("gURL = " + gURL);
  DebugLog("DomainUser = " + DomainUser);
  DebugLog("DomainPassword = " + DomainPassword);
  DebugLog("DomainName = " + DomainName);
  DebugLog("DomainPath = " + DomainPath);
  DebugLog("DomainDir = " + DomainDir);
}

}  // namespace

bool gDebugFilter4 = false;
bool gDebugFilter6 = false;
bool gModelOverride = false;
bool gBlockOverride = false;
bool gTypeOverride = false;

std::string gComPort;

std::string gDefaultURL = BuiltInUrl();
std::string gURL = gDefaultURL;
std::string DomainUser;
std::string DomainPassword;
std::string DomainName;
std::string DomainPath;
std::string DomainDir;

std::filesystem::path gFirmwareDir;
std::unique_ptr<INIfile> gIni;

std::filesystem::path SettingsPath() {
  const program::Identity& self = program::This();
  return self.folder / (self.name + ".ini");
}

void ReadSettingsFile(const std::filesystem::path& path) {
  gIni = std::make_unique<INIfile>();
  gComPort.clear();
  gModelOverride = gBlockOverride = gTypeOverride = gDebugFilter4 = gDebugFilter6 = false;
  gDefaultURL = BuiltInUrl();
  gURL = gDefaultURL;
  gIni->LoadFile(path);
  for (const auto& line : gIni->INIlines()->NewEnum()) {
    if (line->Group == kGroup && line->Section != kGroup) TakeKey(line->Section, line->Value);
  }
  gIni.reset();
  TakeUrlParts();
}

void WriteSettingsFile(const std::filesystem::path& path) {
  gIni = std::make_unique<INIfile>();
  gIni->EqualPos(18);
  const auto lines = gIni->INIlines();
  lines->Add(kGroup);
  lines->Add(kGroup, kPortKey, gComPort);
  for (const BooleanKey& key : kBooleanKeys) {
    const bool on = key.get();
    if (on || key.writtenWhenFalse) lines->Add(kGroup, key.name, on ? "True" : "False");
  }
  if (gURL != gDefaultURL) lines->Add(kGroup, kUrlKey, gURL);
  gIni->SaveFile(path);
  gIni.reset();
}

UrlParts SplitUrl(std::string_view locator) {
  std::string url(locator);
  std::replace(url.begin(), url.end(), '\\', '/');
  // Without a "/" all of it is host.
  const std::size_t first = std::min(url.find('/'), url.size());
  const std::size_t last = std::max(first, std::min(url.rfind('/'), url.size()));
  UrlParts parts{{}, {}, url.substr(0, first), url.substr(first, last - first), url.substr(last)};
  const std::size_t at = parts.name.find('@');
  const std::size_t colon = parts.name.find(':');
  if (at == std::string::npos || colon == std::string::npos) return parts;
  // A ":" behind the "@" belongs to the host: a user without a password.
  parts.user = parts.name.substr(0, std::min(colon, at));
  if (colon < at) parts.password = parts.name.substr(colon + 1, at - colon - 1);
  parts.name.erase(0, at + 1);
  return parts;
}

std::string BuiltInUrl() {
  static constexpr auto kScrambled = Scrambled(TARNWICK_UPDATE_SITE);
  std::string url(kScrambled.begin(), kScrambled.end());
  for (char& c : url) c = static_cast<char>(c - 1);
  return url;
}

}  // namespace tarnwick
