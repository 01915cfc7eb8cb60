// What the wizard engine knows of a page.
#pragma once

#include <cstdint>

namespace tarnwick {

class CWizard;

/// A page of the wizard. The page is also a window that the frame loads, shows, hides and unloads.
class IWizardPage {
 public:
  virtual ~IWizardPage() = default;

  /// The page is about to show. `currentStep` is the step being left, 0 at the very first show.
  /// No veto.
  virtual void BeforePageShow(CWizard& wizard, std::int16_t currentStep) = 0;

  /// The page is about to be left for step `nextStep`. Setting `cancel`, false on entry, stops the
  /// step; the page shows its own message first.
  virtual void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) = 0;
};

}  // namespace tarnwick
