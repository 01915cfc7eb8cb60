#include "platform/process.h"

#include <array>
#include <utility>

#include "platform/files.h"
#include "win32.h"

namespace tarnwick::process {
namespace {

using win32::Handle;
using win32::HandleOf;
using win32::LastError;
using win32::NumberOf;

/// One word as programs take a command line apart: quoted, each backslash before a quote doubled.
std::wstring Quoted(const std::wstring& word) {
  if (!word.empty() && word.find_first_of(L" \t\n\v\"") == std::wstring::npos) return word;
  std::wstring quoted = L"\"";
  std::size_t slashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') quoted.append(slashes + 1, L'\\');
    slashes = c == L'\\' ? slashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(slashes, L'\\') + L"\"";
}

std::wstring LineOf(const Command& command) {
  std::wstring line;
  for (const std::string& word : command)
    line.append(line.empty() ? L"" : L" ").append(Quoted(win32::FromUtf8(word)));
  return line;
}

/// What a new process gets: three streams that it inherits, and nothing else.
class Streams {
 public:
  Streams(HANDLE input, HANDLE output) : mNothing(OpenNothing()) {
    mHandles = {input, output == nullptr ? mNothing.Get() : output, mNothing.Get()};
    for (const HANDLE handle : mHandles) ::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    mMemory.resize(size);
    mStart.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(mMemory.data());
    ::InitializeProcThreadAttributeList(mStart.lpAttributeList, 1, 0, &size);
    // The same handle must not stand there twice.
    mUnique = mHandles;
    const std::size_t count = mHandles[1] == mHandles[2] || mHandles[0] == mHandles[1] ? 2 : 3;
    if (mHandles[0] == mHandles[1]) mUnique[1] = mHandles[2];
    ::UpdateProcThreadAttribute(mStart.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, mUnique.data(),
                                count * sizeof(HANDLE), nullptr, nullptr);
    mStart.StartupInfo.cb = sizeof mStart;
    mStart.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    mStart.StartupInfo.hStdInput = mHandles[0];
    mStart.StartupInfo.hStdOutput = mHandles[1];
    mStart.StartupInfo.hStdError = mHandles[2];
  }
  ~Streams() { ::DeleteProcThreadAttributeList(mStart.lpAttributeList); }
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;

  STARTUPINFOW* Start() { return &mStart.StartupInfo; }

 private:
  static Handle OpenNothing() {
    return Handle(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
  }

  Handle mNothing;
  std::array<HANDLE, 3> mHandles{};
  std::array<HANDLE, 3> mUnique{};
  std::string mMemory;
  STARTUPINFOEXW mStart{};
};

/// Starts a command; with the streams of this process where `streams` is null, and in the job, where one is
/// given. The process, none where it could not be started.
Handle Launch(const Command& command, DWORD flags, Streams* streams, HANDLE job = nullptr) {
  std::wstring line = LineOf(command);
  STARTUPINFOW plain{};
  plain.cb = sizeof plain;
  PROCESS_INFORMATION made{};
  if (streams != nullptr) flags |= EXTENDED_STARTUPINFO_PRESENT;
  if (::CreateProcessW(win32::FromUtf8(command[0]).c_str(), line.data(), nullptr, nullptr, TRUE,
                       flags | CREATE_SUSPENDED, nullptr, nullptr,
                       streams != nullptr ? streams->Start() : &plain, &made) == 0)
    return {};
  if (job != nullptr) ::AssignProcessToJobObject(job, made.hProcess);
  ::ResumeThread(made.hThread);
  ::CloseHandle(made.hThread);
  return Handle(made.hProcess);
}

/// What ends its processes when the last handle of it goes, which is this process's own.
HANDLE EndsWithUs() {
  static const HANDLE job = [] {
    const HANDLE made = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limit{};
    limit.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limit, sizeof limit);
    return made;
  }();
  return job;
}

int StatusOf(HANDLE process) {
  DWORD status = 0;
  return ::GetExitCodeProcess(process, &status) == 0 ? -1 : static_cast<int>(status);
}

/// The exit status of a process that was ended from outside.
constexpr UINT kEnded = static_cast<UINT>(-1);

}  // namespace

bool StartFollower(const Command& command) {
  if (const Starter* const other = Seam<Starter>::Used()) return other->start(command);
  HANDLE reading = nullptr;
  HANDLE writing = nullptr;
  if (::CreatePipe(&reading, &writing, nullptr, 0) == 0) return false;
  const Handle input(reading);
  Handle life(writing);
  Streams streams(input.Get(), nullptr);
  const Handle follower = Launch(command, CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP, &streams);
  // The writing end of a follower's input stays open on purpose: it is closed by the end of this process.
  if (follower) life.Take();
  return static_cast<bool>(follower);
}

/// One pipe of two directions, whose far end is both streams of the child.
std::error_code Child::Start(const Command& command) {
  Stop();
  const std::wstring name = L"\\\\.\\pipe\\Tarnwick." + win32::FromUtf8(files::UniquePart());
  Handle own(::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 65536, 65536, 0, nullptr));
  if (!own) return LastError();
  const Handle theirs(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!theirs) return LastError();
  Streams streams(theirs.Get(), theirs.Get());
  Handle process = Launch(command, CREATE_NO_WINDOW, &streams, EndsWithUs());
  if (!process) return LastError();
  mProcess = NumberOf(process.Take());
  mSocket = NumberOf(own.Take());
  return {};
}

bool Child::Send(std::string_view text) {
  DWORD put = 0;
  return ::WriteFile(HandleOf(mSocket), text.data(), static_cast<DWORD>(text.size()), &put, nullptr) != 0;
}

bool Child::Receive(std::string& text, std::chrono::milliseconds limit) {
  std::array<char, 4096> piece;
  const ULONGLONG end = ::GetTickCount64() + static_cast<ULONGLONG>(limit.count());
  DWORD there = 0;
  while (::PeekNamedPipe(HandleOf(mSocket), nullptr, 0, nullptr, &there, nullptr) != 0 && there == 0) {
    if (::GetTickCount64() >= end) return false;
    ::Sleep(1);
  }
  DWORD got = 0;
  if (there == 0 || ::ReadFile(HandleOf(mSocket), piece.data(), static_cast<DWORD>(piece.size()), &got, nullptr) == 0)
    return false;
  text.append(piece.data(), got);
  return got > 0;
}

/// The end of its input is all the order that there is; one that does not heed it within five seconds is ended.
int Child::Stop() {
  if (mSocket != -1) ::CloseHandle(HandleOf(std::exchange(mSocket, -1)));
  if (mProcess == -1) return -1;
  const Handle process(HandleOf(std::exchange(mProcess, -1)));
  constexpr DWORD kPatience = 5000;
  if (::WaitForSingleObject(process.Get(), kPatience) != WAIT_OBJECT_0) {
    ::TerminateProcess(process.Get(), kEnded);
    ::WaitForSingleObject(process.Get(), INFINITE);
  }
  return StatusOf(process.Get());
}

std::error_code Beside::Start(const Command& command) {
  Handle process = Launch(command, 0, nullptr);
  if (!process) return LastError();
  mProcess = NumberOf(process.Take());
  return {};
}

bool Beside::Runs() {
  if (mProcess == -1) return false;
  if (::WaitForSingleObject(HandleOf(mProcess), 0) == WAIT_TIMEOUT) return true;
  const Handle ended(HandleOf(std::exchange(mProcess, -1)));
  mStatus = StatusOf(ended.Get());
  return false;
}

void Beside::Kill() {
  if (mProcess == -1) return;
  const Handle process(HandleOf(std::exchange(mProcess, -1)));
  ::TerminateProcess(process.Get(), kEnded);
  ::WaitForSingleObject(process.Get(), INFINITE);
}

/// No process becomes another program here: that one is started with this one's words, and this one ends as it
/// does. What this one had locked is free before it begins.
std::error_code Become(const std::filesystem::path& path) {
  std::wstring line = ::GetCommandLineW();
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION made{};
  if (::CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, nullptr,
                       &start, &made) == 0)
    return LastError();
  win32::LetLocksGo();
  ::ResumeThread(made.hThread);
  ::WaitForSingleObject(made.hProcess, INFINITE);
  ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(StatusOf(made.hProcess)));
  return {};
}

}  // namespace tarnwick::process
