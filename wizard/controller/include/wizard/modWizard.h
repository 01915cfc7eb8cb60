// The program's entry behind `main`, and the one controller.
#pragma once

#include <memory>

#include "wizard/CWizardController.h"

namespace tarnwick {

/// The one controller, through which a page reaches the wizard. Borrowed from the owner of what
/// `Main` gives; none until start-up has finished, so also while the first page shows first.
extern IWizardController* gController;

/// Starts the program, with `hooks` as what start and end do with the settings. It lives on in the window
/// system's event dispatch until the frame's way out ends it; the caller keeps the controller for as long.
/// `frame` must outlive the controller.
[[nodiscard]] std::unique_ptr<CWizardController> Main(IWizardFrame& frame, WizardHooks hooks,
                                                      const PageFactories& pages);

}  // namespace tarnwick
