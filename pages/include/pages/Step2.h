// The second page: the serial port. Left forward, it opens the link and reads the bus.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QTimer>

#include "wizard/PageWindow.h"

namespace tarnwick {

class Step2 final : public PageWindow {
 public:
  Step2();

  void Form_Load() override;
  QWidget* FirstControl() override { return cboComPort; }
  void BeforePageShow(CWizard& wizard, std::int16_t currentStep) override;
  void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) override;

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void ListPorts();
  /// Puts ports that have come since at their places and tells anew what is known of each. Nothing
  /// goes away, and the selection stays.
  void AddPorts();
  /// Shows how to get the right to open the selected port, where the user has none, in place of the
  /// note: there is no room for both, and without the right the note is of no use.
  void ShowRights();

  QLabel* Label1 = nullptr;
  QLabel* Label2 = nullptr;
  QLabel* lblRights = nullptr;
  QComboBox* cboComPort = nullptr;
  QTimer* mWatch = nullptr;  ///< Runs while the page is on view.
};

}  // namespace tarnwick
