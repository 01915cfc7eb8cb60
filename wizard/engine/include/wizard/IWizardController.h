// What the wizard engine knows of its owner.
#pragma once

#include <cstdint>

namespace tarnwick {

class CWizard;

class IWizardController {
 public:
  virtual ~IWizardController() = default;

  /// Part of the face; the wizard never calls it.
  virtual void BeforeUILoad() = 0;
  /// A step is about to begin; `direction` is -1, 0 or +1. Setting `cancel`, false on entry, stops it.
  virtual void BeforeStep(std::int32_t direction, bool& cancel) = 0;
  virtual void AfterStep() = 0;
  /// The help button was pressed.
  virtual void OnRequestHelp() = 0;
  /// The frame is asked to close. Setting `cancel`, false on entry, keeps it open.
  virtual void OnCancel(bool& cancel) = 0;
  /// The wizard that this controller owns.
  virtual CWizard& WizardHandle() = 0;
};

}  // namespace tarnwick
