#include "pages/Step3.h"

#include <QGridLayout>
#include <QHBoxLayout>

#include "PackageMarks.h"
#include "StatusBox.h"
#include "firmware/PackageFolder.h"
#include "firmware/QALclass.h"
#include "link/Connection.h"
#include "link/Devices.h"
#include "platform/qt/QtText.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "programmer/Compatibility.h"
#include "programmer/PackageFit.h"
#include "settings/Settings.h"
#include "webupdate/PackageSignature.h"
#include "webupdate/frmWebUpdate.h"
#include "widgets/Controls.h"
#include "widgets/ListBox.h"
#include "widgets/Scale.h"
#include "wizard/CWizard.h"
#include "wizard/modWizard.h"

namespace tarnwick {
namespace {

/// Item value: the file's name as the file system has it, which may be no text.
constexpr int kFileName = Qt::UserRole;

/// The header of the package just loaded, or its error.
std::string DescribePackage() {
  if (gQAL->ErrorsFound()) return PackageErrorText();
  MatchPackageDevices();
  const std::string version = gQAL->Devices() > 0 ? text::Fixed2(gQAL->DeviceVersion(1)) : "Unknown";
  return "Model: " + gQAL->ModelName() + "\r\nVersion: " + version + "\r\nDate: " + gQAL->FileDate() +
         "\r\nComments: " + gQAL->Comments() + "\r\n";
}

}  // namespace

Step3::Step3() : PageWindow(6960, kRoomTwips) {}

Step3::~Step3() = default;

void Step3::Form_Load() {
  Label1 = MakeLabel(this, "Label1", "Choose Firmware or ......");
  lstFirmware = new ListBox(this, "lstFirmware", QStringLiteral("Firmware packages"));
  lstFirmware->onChoose = [this] { lstFirmware_Click(); };
  Label1->setBuddy(lstFirmware);
  lblSignature = MakeWrappedLabel(this, "lblSignature");
  lblFit = MakeWrappedLabel(this, "lblFit");
  mMarks = std::make_unique<PackageMarks>(*lstFirmware, [this](int row) { return PackageOf(row); });
  cmdWebUpdate = MakeButton(this, "cmdWebUpdate", "Download via the Web", [this] { cmdWebUpdate_Click(); });
  txtFirmware = new TextBox(this, "txtFirmware", QStringLiteral("About the selected package"));
  txtStatus = new StatusBox(this);
  cmdRefresh = MakeButton(this, "cmdRefresh", "Refresh Status", [this] { cmdRefresh_Click(); });
  setAcceptDrops(true);
  for (TextBox* const text : {txtFirmware, static_cast<TextBox*>(txtStatus)})
    text->viewport()->setAcceptDrops(false);
  GiveKey(*cmdWebUpdate, Qt::ALT | Qt::Key_D);
  GiveKey(*cmdRefresh, Qt::ALT | Qt::Key_R);
  LayOutControls();
}

void Step3::LayOutControls() {
  auto* const heading = new QHBoxLayout;
  heading->setSpacing(Pixels(6));
  heading->addWidget(Label1);
  heading->addWidget(cmdWebUpdate);
  heading->addStretch(1);
  heading->addWidget(cmdRefresh);
  auto* const grid = new QGridLayout(this);
  grid->setContentsMargins(Pixels(6), Pixels(4), Pixels(6), Pixels(4));
  grid->setSpacing(Pixels(5));
  grid->addLayout(heading, 0, 0, 1, 2);
  grid->addWidget(lstFirmware, 1, 0);
  grid->addWidget(lblSignature, 2, 0);
  grid->addWidget(lblFit, 3, 0);
  grid->addWidget(txtFirmware, 4, 0);
  grid->addWidget(txtStatus, 1, 1, 4, 1);
  grid->setRowStretch(1, 1);
  grid->setRowStretch(4, 1);
  grid->setColumnStretch(0, 11);
  grid->setColumnStretch(1, 10);
}

QWidget* Step3::FirstControl() {
  return lstFirmware;
}

std::filesystem::path Step3::PackageOf(int row) const {
  return gFirmwareDir / lstFirmware->item(row)->data(kFileName).toByteArray().toStdString();
}

std::filesystem::path Step3::SelectedPackage() const {
  return PackageOf(lstFirmware->Selected());
}

void Step3::ShowOpinions() {
  if (lstFirmware->Selected() < 0) {
    lblSignature->clear();
    lblFit->clear();
    return;
  }
  ShowSignature(JudgeSignatureOf(SelectedPackage()));
  ShowFit();
}

void Step3::ShowSignature(const PackageSignature& signature) {
  lblSignature->setText(qt::ShowName(SignatureText(signature)));  // A signer's name is that of a file.
}

void Step3::ShowFit() {
  lblFit->setText(qt::Show(mMarks->Say(lstFirmware->Selected())));
}

void Step3::ListFirmware(const std::string& selectName) {
  lstFirmware->Empty();
  txtFirmware->Text({});
  int wanted = -1;
  for (const std::string& name : PackagesIn(gFirmwareDir)) {
    if (text::EqualNoCase(name, selectName)) wanted = lstFirmware->count();
    auto* const item = new QListWidgetItem(qt::ShowName(name), lstFirmware);
    item->setData(kFileName, QByteArray::fromStdString(name));
  }
  mMarks->Restart();
  ShowOpinions();
  if (lstFirmware->count() == 0) return;
  lstFirmware->Select(0);
  if (wanted >= 0) lstFirmware->Select(wanted);
}

void Step3::lstFirmware_Click() {
  CWizard& wizard = gController->WizardHandle();
  const std::filesystem::path package = SelectedPackage();
  const std::filesystem::path note = NoteOf(package);
  if (const auto text = ReadNote(note)) {
    txtFirmware->TextNow(*text);
    ShowSignature(JudgeSignatureOf(package));
  } else {
    wizard.Frozen(true);
    const PackageSignature signature = LoadSigned(*gQAL, package);
    txtFirmware->TextNow(DescribePackage());
    ShowSignature(signature);
  }
  ShowFit();
  wizard.Frozen(false);
}

void Step3::BeforePageShow(CWizard& wizard, std::int16_t currentStep) {
  if (currentStep == 2) {
    wizard.Frame().PumpEvents();
    wizard.Frozen(true);
    txtStatus->ShowReport();
    ListFirmware({});
    wizard.Frozen(false);
    return;
  }
  for (std::int32_t row = 1; row <= gDeviceCount(); ++row) {
    ForgetRevisions(row);
    RefreshDevice(row);
  }
  txtStatus->ShowReport();
  mMarks->Restart();
  ShowOpinions();
}

void Step3::EnableButtons(bool enabled) {
  for (QPushButton* const button : {cmdRefresh, cmdWebUpdate}) button->setEnabled(enabled);
}

void Step3::cmdRefresh_Click() {
  CWizard& wizard = gController->WizardHandle();
  wizard.Frozen(true);
  EnableButtons(false);
  txtStatus->ShowWaiting();
  if (!gComPort.empty()) {
    LockHandControl();
    RefreshDevices();
  }
  txtStatus->ShowReport();
  mMarks->Restart();
  ShowOpinions();
  EnableButtons(true);
  wizard.Frozen(false);
}

void Step3::cmdWebUpdate_Click() {
  CWizard& wizard = gController->WizardHandle();
  wizard.Frozen(true);  // The window talks to the site before it is shown and blocks this one.
  cmdWebUpdate->setEnabled(false);
  frmWebUpdate window(this->window());
  window.ShowModal();
  ListFirmware(window.FirmwareText() + std::string(kPackageEnding));
  cmdWebUpdate->setEnabled(true);
  wizard.Frozen(false);
  lstFirmware->setFocus();
}

void Step3::BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) {
  if (nextStep != wizard.CurrentStep() + 1) return;
  if (gComPort.empty()) {
    ui::MessageBox("No COM port was specified!");
    cancel = true;
  } else if (lstFirmware->count() == 0) {
    ui::MessageBox(
        "There are no firmware files available.\r\nPlease use Web Updates to download new firmware.");
    cancel = true;
  } else if (lstFirmware->Selected() < 0) {
    ui::MessageBox("Please choose a firmware file");
    cancel = true;
  } else {
    wizard.Frozen(true);
    const std::filesystem::path judged = SelectedPackage();
    cancel = !AcceptPackage();
    wizard.Frozen(false);
    // Whatever came in between, only what was judged goes on.
    const bool same = lstFirmware->Selected() >= 0 && SelectedPackage() == judged;
    cancel = cancel || !same || gQAL->RealFilename() != judged;
  }
}

bool Step3::AcceptPackage() {
  const PackageSignature signature = LoadSigned(*gQAL, SelectedPackage());
  const QString told = lblSignature->text();
  ShowSignature(signature);
  if (!AcceptSignature(signature)) return false;
  const bool asTold = told == lblSignature->text() || signature.state == PackageSignature::State::DoesNotFit;
  if (!asTold || !PackageFits()) return false;
  txtStatus->Refresh();
  return true;
}

}  // namespace tarnwick
