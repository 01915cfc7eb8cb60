// The whole program, composed: what `main` runs and what a driver of the window runs too.
#pragma once

#include <memory>

class QApplication;

namespace tarnwick {

class WizardWindow;

/// The program between its start and its end. One at a time.
class App {
 public:
  /// Puts the platform in place. `application` must outlive this.
  explicit App(QApplication& application);
  ~App();
  App(const App&) = delete;
  App& operator=(const App&) = delete;

  /// Starts the program: afterwards the first page is on view. The program lives on in the event
  /// loop until its window is closed, which ends the process.
  void Start();

  /// The makers' key, built in, is the one whose holder may sign releases.
  static void TrustBuiltInKey();

  /// The frame's window.
  WizardWindow& Window();

 private:
  struct Parts;
  std::unique_ptr<Parts> mParts;
};

}  // namespace tarnwick
