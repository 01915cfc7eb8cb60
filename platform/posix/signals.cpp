#include "platform/signals.h"

#include <signal.h>
#include <unistd.h>

#include <initializer_list>

#include "platform/program.h"

namespace tarnwick::signals {
namespace {

volatile sig_atomic_t gInterrupt = 0;
volatile sig_atomic_t gEnd = 0;

void NoteOne(int signal) {
  (signal == SIGINT ? gInterrupt : gEnd) = 1;
}

}  // namespace

void Note() {
  program::OutliveTerminal();
  struct sigaction noted {};
  noted.sa_handler = NoteOne;  // Without SA_RESTART: a question that waits for its answer is woken.
  for (const int signal : {SIGINT, SIGTERM}) ::sigaction(signal, &noted, nullptr);
}

Asked Take() {
  const bool end = gEnd != 0;
  const bool interrupt = gInterrupt != 0;
  gEnd = 0;
  gInterrupt = 0;
  if (end) return Asked::End;
  return interrupt ? Asked::Interrupt : Asked::Nothing;
}

bool IsAttended() {
  return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

bool ShowsTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

}  // namespace tarnwick::signals
