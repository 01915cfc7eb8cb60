// The last page: programming and verifying.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <cstdint>
#include <vector>

#include "firmware/QalPackage.h"
#include "programmer/Progress.h"
#include "programmer/RunOutcome.h"
#include "programmer/TimeLeft.h"
#include "wizard/PageWindow.h"

namespace tarnwick {

class ListBox;
class ProgressBar;
class StatusBox;
class TextBox;

class Step4 final : public PageWindow, public IProgress {
 public:
  Step4();

  void Form_Load() override;
  QWidget* FirstControl() override;
  void BeforePageShow(CWizard& wizard, std::int16_t currentStep) override;
  void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) override;

  void Label(const std::string& text) override;
  void Bar(double fraction) override;
  void Turn(std::int32_t row, std::int32_t number, std::int32_t count) override;
  void Waiting(const std::string& what) override;
  void Caption(const std::string& text) override;
  void Rest() override;
  void Busy(bool busy) override;
  void Status() override;

 private:
  void cmdProgram_Click();
  void cmdRefresh_Click();
  void cmdVerify_Click();
  void ClearProgress();
  void EnableButtons(bool enabled);
  /// Shows how a run ended and what to do; nothing where there is nothing to tell.
  void ShowOutcomes(const std::vector<RowOutcome>& outcomes);
  /// The rows of `gDevices` that the selection stands for, in list order; empty without a selection.
  std::vector<std::int32_t> ChosenRows() const;
  /// Shows the message that a device must be chosen.
  void RefuseNoSelection();
  void ListDevices();
  void LayOutControls();

  QalIdentity mJudged;  ///< The package that the page before held against the devices.
  ListBox* lstDevices = nullptr;
  StatusBox* txtStatus = nullptr;
  TextBox* txtOutcome = nullptr;
  QPushButton* cmdProgram = nullptr;
  QPushButton* cmdVerify = nullptr;
  QPushButton* cmdRefresh = nullptr;
  QPushButton* cmdCopy = nullptr;
  QLabel* lblFirmware = nullptr;
  QLabel* Label1 = nullptr;
  QFrame* Line1 = nullptr;
  ProgressBar* mBar = nullptr;
  QLabel* lblLeft = nullptr;  ///< Which motor of how many, and how long the run will still take.
  TimeLeft mLeft;
};

}  // namespace tarnwick
