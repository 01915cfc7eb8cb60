#include "webupdate/frmWebUpdate.h"

#include <algorithm>

#include "GivingUp.h"
#include "PackageGrid.h"
#include "link/Devices.h"
#include "platform/contain.h"
#include "platform/program.h"
#include "platform/qt/InputGate.h"
#include "platform/qt/QtText.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "settings/Settings.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/Packages.h"
#include "webupdate/Site.h"
#include "widgets/Controls.h"
#include "widgets/ProgressBar.h"

namespace tarnwick {
namespace {

constexpr std::string_view kRemoveQuestion = "Are you sure you want to Remove this file from your computer?";
constexpr std::string_view kGoneOnline =
    "Warning: This firmware is no longer available online.\r\n"
    "If you remove it, you will not be able re-download it.\r\n\r\n";

constexpr std::string_view kCut =
    "The site lists more than 100,000 packages: those behind them are not shown.";

std::string Title() {
  if (gURL == gDefaultURL) return "Web Updates";
  return " Web Updates [" + DomainName + DomainPath + DomainDir + "]";
}

}  // namespace

frmWebUpdate::frmWebUpdate(QWidget* owner) : QDialog(owner) {
  setWindowModality(Qt::WindowModal);
  MakeControls();
}

frmWebUpdate::~frmWebUpdate() = default;

void frmWebUpdate::ShowModal() {
  if (!Form_Load()) return program::End();
  exec();
}

bool frmWebUpdate::Form_Load() {
  Loading = true;
  setWindowTitle(qt::ShowName(Title()));
  CentreOnScreen();
  cmdDownload->setEnabled(false);
  cmdRemove->setEnabled(false);
  cmdDone->setDefault(true);
  ExpectedSize = 0;
  HTTP_Progress(0);
  Transfer([this] {
    Contain([this] { LoadCatalogue(); });
    Contain([this] { mCatalogue.MergeLocalFiles(gFirmwareDir); });
    mCatalogue.SortFiles();
    FillGrid();
  });
  if (mCatalogue.IsCut()) ShowAnswer(std::string(kCut));
  Loading = false;
  ui::PumpEvents();
  return !OfferNewProgram();
}

void frmWebUpdate::NewHTTP() {
  HTTP = std::make_unique<HTTPClass>();
  HTTP->Progress = [this](std::int32_t count) { HTTP_Progress(count); };
}

void frmWebUpdate::Transfer(const std::function<void()>& work) {
  setCursor(Qt::WaitCursor);
  BeginGivingUp();
  Contain(work);
  EndGivingUp();
  if (HTTP) ShowAnswer(AnswerLine(HTTP->LastAnswer()));
  HTTP.reset();
  unsetCursor();
}

void frmWebUpdate::BeginGivingUp() {
  mGivingUp = std::make_unique<GivingUp>(*this);
  cmdCancel->show();
}

void frmWebUpdate::EndGivingUp() {
  cmdCancel->hide();
  mGivingUp.reset();
}

void frmWebUpdate::ShowAnswer(const std::string& line) {
  lblAnswer->setText(qt::Show(line));
  lblAnswer->setVisible(!line.empty());
}

void frmWebUpdate::LoadCatalogue() {
  mCatalogue.Load({}, gDeviceClass);
  NewHTTP();
  if (!OpenSite(*HTTP)) return;
  ExpectedSize = 0;
  mCatalogue.Load(FetchText(*HTTP, CataloguePath()), gDeviceClass);
}

void frmWebUpdate::FillGrid() {
  Grid->Fill();
}

void frmWebUpdate::ShowCurrentRow() {
  if (Loading || Grid->Row() < 1) return;
  if (!mTransfer) {
    ExpectedSize = 0;
    HTTP_Progress(0);
  }
  // Meanwhile events were pumped: what is current now counts.
  const int row = Grid->Row();
  txtDescription->Text(row > 0 ? mCatalogue.Files(row).Description : std::string());
  SettleButtons();
}

void frmWebUpdate::SettleButtons() {
  if (mTransfer) return;
  const int row = Grid->Row();
  const bool local = row > 0 && mCatalogue.Files(row).Local;
  cmdDownload->setEnabled(row > 0 && !local);
  cmdRemove->setEnabled(local);
  (cmdDownload->isEnabled() ? cmdDownload : cmdDone)->setDefault(true);
}

void frmWebUpdate::HTTP_Progress(std::int32_t count) {
  double fraction = 0.0;
  QString label;
  if (ExpectedSize != 0) {
    fraction = std::min(static_cast<double>(count) / ExpectedSize, 1.0);
    label = QString::number(text::ToInt32(fraction * 100)) + QLatin1Char('%');
  }
  mBar->Label(label);
  mBar->Bar(fraction);
  ui::PumpEvents();
}

void frmWebUpdate::cmdDownload_Click() {
  const int row = Grid->Row();
  if (row < 1) return;
  Grid->setFocus();  // A button that goes dead would hand the focus to one that is not meant.
  cmdDownload->setEnabled(false);
  cmdDone->setEnabled(false);
  mTransfer = true;
  Transfer([this, row] {
    FileEntry& entry = mCatalogue.Files(row);
    NewHTTP();
    ExpectedSize = entry.Size;
    if (!DownloadPackage(*HTTP, gFirmwareDir, entry)) return;
    FillGrid();
    mBar->Label(QStringLiteral("Download Complete"));
  });
  qt::InputGate::Of().Discard();  // What was pressed while it was dead stays undone.
  mTransfer = false;
  txtDescription->Text(mCatalogue.Files(Grid->Row()).Description);
  SettleButtons();
  cmdDone->setEnabled(true);
}

void frmWebUpdate::cmdRemove_Click() {
  const int row = Grid->Row();
  if (row < 1) return;
  Grid->setFocus();
  cmdRemove->setEnabled(false);
  const std::string warning(mCatalogue.Files(row).Remote ? std::string_view() : kGoneOnline);
  const ui::Answer answer =
      ui::MessageBox(warning + std::string(kRemoveQuestion), ui::Buttons::YesNo, ui::Icon::Question);
  if (answer == ui::Answer::Yes) Contain([this, row] { RemoveRow(row); });
  SettleButtons();
  ShowCurrentRow();
}

void frmWebUpdate::RemoveRow(std::int32_t row) {
  FileEntry& entry = mCatalogue.Files(row);
  if (!RemovePackage(gFirmwareDir, entry)) return;
  if (!entry.Local && !entry.Remote) {
    mCatalogue.DeleteFile(row);
    txtDescription->Text({});
  }
  FillGrid();
}

void frmWebUpdate::cmdDone_Click() {
  Form_Unload();
  accept();
}

void frmWebUpdate::Form_Unload() {
  const int row = Grid->Row();
  mFirmwareText = row > 0 ? mCatalogue.Files(row).Name : std::string();
}

void frmWebUpdate::reject() {
  if (mGivingUp) return mGivingUp->GiveUp();
  if (cmdDone->isEnabled()) cmdDone_Click();
}

}  // namespace tarnwick
