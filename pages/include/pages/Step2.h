// The second page: the serial port. Left forward, it opens the link and reads the bus.
#pragma once

#include <QComboBox>
#include <QLabel>

#include "wizard/PageWindow.h"

namespace tarnwick {

class Step2 final : public PageWindow {
 public:
  Step2();

  void Form_Load() override;
  QWidget* FirstControl() override { return cboComPort; }
  void BeforePageShow(CWizard& wizard, std::int16_t currentStep) override;
  void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) override;

 private:
  void ListPorts();
  /// Opens the link and reads the bus. False when nothing usable answers, after a message.
  bool Connect();

  QLabel* Label1 = nullptr;
  QLabel* Label2 = nullptr;
  QComboBox* cboComPort = nullptr;
};

}  // namespace tarnwick
