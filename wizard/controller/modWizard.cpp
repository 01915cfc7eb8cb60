#include "wizard/modWizard.h"

namespace tarnwick {

IWizardController* gController = nullptr;

std::unique_ptr<CWizardController> Main(IWizardFrame& frame, const PageFactories& pages) {
  auto controller = std::make_unique<CWizardController>(frame, pages);
  gController = controller.get();
  return controller;
}

}  // namespace tarnwick
