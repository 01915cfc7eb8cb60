#include "pages/Step4.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "StatusBox.h"
#include "firmware/QALclass.h"
#include "link/Devices.h"
#include "platform/program.h"
#include "platform/qt/CopyRecord.h"
#include "platform/qt/QtText.h"
#include "platform/ui.h"
#include "programmer/ProgrammingRun.h"
#include "programmer/Verify.h"
#include "programmer/modProgrammer.h"
#include "widgets/Controls.h"
#include "widgets/ListBox.h"
#include "widgets/ProgressBar.h"
#include "widgets/Scale.h"
#include "wizard/CWizard.h"
#include "wizard/modWizard.h"

namespace tarnwick {
namespace {

/// Item value of "All Devices"; every other value is a row of `gDevices`.
constexpr std::int32_t kAllDevices = -1;

/// The name comes from the package, where it can be of any length.
constexpr qt::TextBound kOneLine{.lines = 1, .lineLength = 300};

std::int32_t ValueOf(const QListWidgetItem& item) {
  return item.data(Qt::UserRole).toInt();
}

void AddItem(ListBox& list, std::string_view name, std::int32_t value) {
  auto* const item = new QListWidgetItem(qt::Show(name), &list);
  item->setData(Qt::UserRole, value);
}

}  // namespace

Step4::Step4() : PageWindow(6960, kRoomTwips) {}

void Step4::Form_Load() {
  // Made in the order in which the focus goes.
  lstDevices = new ListBox(this, "lstDevices", QStringLiteral("Devices"));
  lstDevices->onChoose = [this] { ClearProgress(); };
  cmdProgram = MakeButton(this, "cmdProgram", "Begin Programming", [this] { cmdProgram_Click(); });
  cmdVerify = MakeButton(this, "cmdVerify", "Verify Firmware", [this] { cmdVerify_Click(); });
  txtStatus = new StatusBox(this);
  cmdRefresh = MakeButton(this, "cmdRefresh", "Refresh Status", [this] { cmdRefresh_Click(); });
  cmdCopy = MakeButton(this, "cmdCopy", "Copy details", qt::CopyRecord);
  lblFirmware = MakeLabel(this, "lblFirmware", {});
  Label1 = MakeLabel(this, "Label1", "Choose Device ...");
  Label1->setBuddy(lstDevices);
  Line1 = new QFrame(this);
  Line1->setObjectName(QStringLiteral("Line1"));
  Line1->setFrameShape(QFrame::HLine);
  Line1->setFrameShadow(QFrame::Sunken);
  mBar = new ProgressBar(this);
  lblLeft = MakeLabel(this, "lblLeft", {});
  txtOutcome = new TextBox(this, "txtOutcome", QStringLiteral("Outcome"));
  txtOutcome->hide();
  GiveKey(*cmdProgram, Qt::ALT | Qt::Key_P);
  GiveKey(*cmdVerify, Qt::ALT | Qt::Key_V);
  GiveKey(*cmdRefresh, Qt::ALT | Qt::Key_R);
  GiveKey(*cmdCopy, Qt::ALT | Qt::Key_C);
  LayOutControls();
}

void Step4::LayOutControls() {
  auto* const grid = new QGridLayout(this);
  grid->setContentsMargins(Pixels(6), Pixels(4), Pixels(6), Pixels(4));
  grid->setHorizontalSpacing(Pixels(8));
  grid->setVerticalSpacing(Pixels(4));
  grid->addWidget(Label1, 0, 0);
  grid->addWidget(lblFirmware, 0, 1);
  grid->addWidget(lstDevices, 1, 0);
  grid->addWidget(cmdProgram, 2, 0);
  grid->addWidget(cmdVerify, 3, 0);
  grid->addWidget(txtStatus, 1, 1, 2, 1);
  auto* const asides = new QHBoxLayout;
  asides->setSpacing(Pixels(6));
  asides->addStretch(1);
  asides->addWidget(cmdRefresh);
  asides->addWidget(cmdCopy);
  grid->addLayout(asides, 3, 1);
  grid->addWidget(Line1, 4, 0, 1, 2);
  auto* const progress = new QVBoxLayout;
  progress->setSpacing(Pixels(4));
  progress->addWidget(mBar);
  progress->addWidget(lblLeft, 1);
  grid->addLayout(progress, 5, 0, 1, 2);
  grid->addWidget(txtOutcome, 5, 0, 1, 2);  // Over the bar, which is empty when there is an outcome.
  txtOutcome->raise();
  grid->setRowStretch(1, 1);
  grid->setColumnStretch(0, 2);
  grid->setColumnStretch(1, 3);
  mBar->setFixedHeight(Pixels(18));
  // The longest outcome of one motor and a line of the other. The room is kept, so that nothing above moves.
  txtOutcome->setFixedHeight(Pixels(66));
  QSizePolicy kept = txtOutcome->sizePolicy();
  kept.setRetainSizeWhenHidden(true);
  txtOutcome->setSizePolicy(kept);
  lblLeft->setAlignment(Qt::AlignTop);
  QPalette readable = lblLeft->palette();  // Also on the locked page, where it is all that tells.
  readable.setColor(QPalette::Disabled, QPalette::WindowText,
                    readable.color(QPalette::Active, QPalette::WindowText));
  lblLeft->setPalette(readable);
  lblFirmware->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

QWidget* Step4::FirstControl() {
  return lstDevices;
}

void Step4::Label(const std::string& text) {
  mBar->Label(qt::Show(text));
}
void Step4::Waiting(const std::string& what) {
  mBar->Waiting(qt::Show(what));
}
void Step4::Bar(double fraction) {
  mBar->Bar(fraction);
  mLeft.Reached(fraction);
  lblLeft->setText(gProgramming || gVerifying ? qt::Show(mLeft.Text()) : QString());
}
void Step4::Turn(std::int32_t row, std::int32_t number, std::int32_t count) {
  mLeft.Begin(number, count);
  txtStatus->LookAt(row);
}
void Step4::Caption(const std::string& text) {
  gController->WizardHandle().Frame().FrameCaption(text);
}

void Step4::ClearProgress() {
  mBar->Bar(0.0);
  mBar->Label({});
  lblLeft->clear();
}

void Step4::ShowOutcomes(const std::vector<RowOutcome>& outcomes) {
  std::string lines;
  for (const RowOutcome& outcome : outcomes) lines += (lines.empty() ? "" : "\r\n") + OutcomeText(outcome);
  txtOutcome->Text(lines);
  txtOutcome->setVisible(!lines.empty());
}

void Step4::EnableButtons(bool enabled) {
  for (QPushButton* const button : {cmdProgram, cmdRefresh, cmdVerify, cmdCopy}) button->setEnabled(enabled);
}

void Step4::Rest() {
  Caption(program::Caption());
  gController->WizardHandle().Frame().Enabled(FrameButton::cmdTerminate, true);
}

void Step4::Busy(bool busy) {
  gController->WizardHandle().Frame().Caption(FrameButton::cmdTerminate, busy ? "Cancel" : "Finish");
  gController->WizardHandle().Frame().ShowLock();
}

void Step4::Status() {
  txtStatus->Refresh();
}

void Step4::BeforePageShow(CWizard& wizard, std::int16_t currentStep) {
  if (currentStep != 3) {
    txtStatus->ShowReport();
    return;
  }
  wizard.Frozen(true);
  txtStatus->LookAt(0);
  txtStatus->ShowReport();
  lblFirmware->setText(qt::Bounded(qt::ShowName("QAL File: " + gQAL->Filename()), kOneLine));
  lblFirmware->setToolTip(qt::PlainTip(lblFirmware->text()));
  mJudged = gQAL->Identity();
  ListDevices();
  ClearProgress();
  ShowOutcomes({});
  wizard.Frozen(false);
}

void Step4::BeforePageHide(CWizard&, std::int16_t, bool&) {}

void Step4::ListDevices() {
  lstDevices->Empty();
  AddItem(*lstDevices, "All Devices", kAllDevices);
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    if (gDevices[row].QalIndex > 0) AddItem(*lstDevices, gDevices[row].Name, row);
  }
}

std::vector<std::int32_t> Step4::ChosenRows() const {
  std::vector<std::int32_t> rows;
  const int selected = lstDevices->Selected();
  if (selected < 0) return rows;
  const std::int32_t value = ValueOf(*lstDevices->item(selected));
  if (value != kAllDevices) return {value};
  for (int item = 1; item < lstDevices->count(); ++item) rows.push_back(ValueOf(*lstDevices->item(item)));
  return rows;
}

void Step4::RefuseNoSelection() {
  ui::MessageBox("Please choose a Device");
  ClearProgress();
}

void Step4::cmdRefresh_Click() {
  CWizard& wizard = gController->WizardHandle();
  wizard.Frozen(true);
  EnableButtons(false);
  txtStatus->Refresh();
  EnableButtons(true);
  wizard.Frozen(false);
}

void Step4::cmdProgram_Click() {
  if (lstDevices->Selected() < 0) return RefuseNoSelection();
  CWizard& wizard = gController->WizardHandle();
  wizard.Frozen(true);
  EnableButtons(false);
  ShowOutcomes({});
  const bool together = ValueOf(*lstDevices->item(lstDevices->Selected())) == kAllDevices;
  ProgrammingRun run(ChosenRows(), together, mJudged);
  run.Execute(*this);
  ClearProgress();
  ShowOutcomes(run.Outcomes());
  EnableButtons(true);
  wizard.Frozen(false);
}

void Step4::cmdVerify_Click() {
  gCancelVerify = false;
  if (lstDevices->Selected() < 0) return RefuseNoSelection();
  const std::vector<std::int32_t> rows = ChosenRows();
  if (const std::string refusal = VerifyRefusal(rows); !refusal.empty()) {
    ui::MessageBox(refusal);
    return ClearProgress();
  }
  CWizard& wizard = gController->WizardHandle();
  wizard.Frozen(true);
  EnableButtons(false);
  ShowOutcomes({});
  VerifyAll(rows, *this);
  ClearProgress();
  EnableButtons(true);
  wizard.Frozen(false);
}

}  // namespace tarnwick
