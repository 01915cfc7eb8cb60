// What the system knows of this process, and of its user.
#include <cstdlib>

#include "platform/program.h"
#include "win32.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

/// Which file of the system lies under a path; false where none can be told.
bool Identify(const fs::path& path, BY_HANDLE_FILE_INFORMATION& info) {
  const win32::Handle file = win32::OpenFile(path, FILE_READ_ATTRIBUTES, win32::kShareAll, OPEN_EXISTING);
  return file && ::GetFileInformationByHandle(file.Get(), &info) != 0;
}

}  // namespace

constinit const std::string_view program::kFileEnding = ".exe";

/// The name under which it was started: the system goes on telling it when the file got another one.
fs::path program::RunningFile() {
  return win32::FileOfModule(nullptr);
}

/// A program that runs can be renamed and not deleted: its file is asked for by the name that it has now.
bool program::IsReplaced() {
  std::wstring now(32768, L'\0');
  auto size = static_cast<DWORD>(now.size());
  if (::QueryFullProcessImageNameW(::GetCurrentProcess(), 0, now.data(), &size) == 0) return false;
  now.resize(size);
  BY_HANDLE_FILE_INFORMATION running{};
  BY_HANDLE_FILE_INFORMATION named{};
  if (!Identify(now, running)) return false;
  return !Identify(RunningFile(), named) || running.dwVolumeSerialNumber != named.dwVolumeSerialNumber ||
         running.nFileIndexHigh != named.nFileIndexHigh || running.nFileIndexLow != named.nFileIndexLow;
}

/// A console that goes ends its programs, and there is no signal to pass over.
void program::OutliveTerminal() {}

std::string program::System() {
  return TARNWICK_SYSTEM;
}

fs::path program::UserData() {
  const wchar_t* const data = ::_wgetenv(L"LOCALAPPDATA");
  const fs::path named = data == nullptr ? fs::path() : fs::path(data);
  return named.is_absolute() ? named : fs::path();
}

bool program::HasDisplay() {
  return true;
}

/// Asked of the system's lowest layer: what is above it tells each program the version that it was made for.
std::string program::SystemText() {
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  using Ask = LONG(WINAPI*)(OSVERSIONINFOW*);
  const auto ask = reinterpret_cast<Ask>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
  if (ask == nullptr || ask(&version) != 0) return "an unknown system";
  return "Windows " + std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
         std::to_string(version.dwBuildNumber) + " x86_64";
}

}  // namespace tarnwick
