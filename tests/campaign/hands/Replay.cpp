// Accidents of old, played as they happened, on whatever window system the toolkit has.
#include <QWidget>
#include <utility>

#include "Visit.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {

using namespace std::chrono_literals;

QPoint Visit::PlaceOf(const char* name) const {
  const QWidget* const control = OnView<QWidget>(name);
  return control->mapToGlobal(control->rect().center());
}

void Visit::PlayCue() {
  const bool waits = !cues.empty() && hands.Resting() && See({}).live;
  if (!waits || gController->WizardHandle().CurrentStep() != cues.front().page) return;
  const Cue cue = std::move(cues.front());
  cues.pop_front();
  cue.act();
  busy = Now();
}

void Visit::Replay(int number) {
  hands.mActions = 0;
  busy = Now();
  const auto tap = [this](Milliseconds in, int key, Qt::KeyboardModifiers modifiers = {}, Milliseconds held = 50ms) {
    hands.Tap(Now() + 400ms + in, key, modifiers, held);
  };
  const auto click = [this](Milliseconds in, const char* name) {
    hands.Click(Now() + 400ms + in, PlaceOf(name), PlaceOf(name), 50ms);
  };
  if (number == 3) return cues.push_back({1, [tap] { tap(0ms, Qt::Key_Return, {}, 5s); }});  // Held from the first page.
  for (const int page : {1, 2, 3}) cues.push_back({page, [tap] { tap(0ms, Qt::Key_Return); }});
  cues.push_back({4, [tap] { tap(0ms, Qt::Key_Down); }});  // All devices.
  if (number == 1) {
    line.line.setup.latency = 50ms;
    cues.push_back({4, [=] {  // What is pressed while the status is asked for.
                      tap(0ms, Qt::Key_R, Qt::AltModifier);
                      click(100ms, "cmdProgram");
                      tap(200ms, Qt::Key_P, Qt::AltModifier);
                    }});
  } else {
    line.line.setup.latency = 20ms;
    cues.push_back({4, [click] { click(0ms, "cmdHelp"); }});
    cues.push_back({4, [tap] {  // A button that loses the keyboard to a run.
                      tap(0ms, Qt::Key_P, Qt::AltModifier);
                      for (const Milliseconds in : {400ms, 600ms}) tap(in, Qt::Key_Space);
                    }});
  }
}

}  // namespace tarnwick::test
