#include "platform/signals.h"

#include <atomic>

#include "platform/program.h"
#include "win32.h"

namespace tarnwick::signals {
namespace {

std::atomic<bool> gInterrupt = false;
std::atomic<bool> gEnd = false;

/// Runs in a thread of the system's. Where the console closes, or the user logs off, the process ends with its
/// return or after some seconds: until then the work can come to its end.
BOOL WINAPI NoteOne(DWORD event) {
  (event == CTRL_C_EVENT ? gInterrupt : gEnd) = true;
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) ::Sleep(INFINITE);
  return TRUE;
}

bool IsConsole(DWORD stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

}  // namespace

void Note() {
  program::OutliveTerminal();
  ::SetConsoleCtrlHandler(NoteOne, TRUE);
}

Asked Take() {
  const bool end = gEnd.exchange(false);
  const bool interrupt = gInterrupt.exchange(false);
  if (end) return Asked::End;
  return interrupt ? Asked::Interrupt : Asked::Nothing;
}

bool IsAttended() {
  return IsConsole(STD_INPUT_HANDLE) && IsConsole(STD_ERROR_HANDLE);
}

bool ShowsTerminal() {
  return IsConsole(STD_OUTPUT_HANDLE);
}

}  // namespace tarnwick::signals
