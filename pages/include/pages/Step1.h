// The first page: the class of device.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <array>

#include "wizard/PageWindow.h"

namespace tarnwick {

class Step1 final : public PageWindow {
 public:
  Step1();

  void Form_Load() override;
  QWidget* FirstControl() override { return cboDevice; }
  void BeforePageShow(CWizard& wizard, std::int16_t currentStep) override;
  /// Builds the device table and the firmware folder for the chosen class. Never refuses.
  void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) override;

 private:
  std::array<QLabel*, 3> Label1{};
  QLabel* Label2 = nullptr;
  QLabel* lblFolder = nullptr;  ///< Told where nothing can be kept.
  QComboBox* cboDevice = nullptr;
};

}  // namespace tarnwick
