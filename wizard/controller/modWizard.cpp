#include "wizard/modWizard.h"

#include <utility>

namespace tarnwick {

IWizardController* gController = nullptr;

std::unique_ptr<CWizardController> Main(IWizardFrame& frame, WizardHooks hooks, const PageFactories& pages) {
  auto controller = std::make_unique<CWizardController>(frame, std::move(hooks), pages);
  gController = controller.get();
  return controller;
}

}  // namespace tarnwick
