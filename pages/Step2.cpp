#include "pages/Step2.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>

#include "link/Bus.h"
#include "link/Connection.h"
#include "link/OpeningCause.h"
#include "platform/program.h"
#include "platform/qt/QtText.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "ports/ports.h"
#include "settings/Settings.h"
#include "widgets/Controls.h"
#include "widgets/Scale.h"
#include "wizard/CWizard.h"

namespace tarnwick {
namespace {

constexpr std::string_view kNote =
    "Make sure you choose the COM port that is attached to your telescope and that you are using the proper "
    "Programming cable.  The Halcyrion Hand Control should NOT be connected at this time, and the telescope "
    "should "
    "have just been powered ON.\r\n\r\n"
    "Note: Choose None if you are not connected to a telescope right now but would like to check for Web "
    "Updates on "
    "the Next screen.";

/// How often the page on view looks for ports that were plugged in.
constexpr int kWatchMilliseconds = 1000;

/// Item values: what the user has to do to be allowed to open the port, empty when allowed; device and
/// product; whether it is a USB adapter.
constexpr int kRights = Qt::UserRole;
constexpr int kDevice = Qt::UserRole + 1;
constexpr int kAdapter = Qt::UserRole + 2;

std::string RightsTo(const std::filesystem::path& device) {
  const serial::Access access = serial::AccessTo(device);
  if (access.allowed) return {};
  if (access.group.empty()) return "You may not open this port yet, and no group of users may.";
  return "You may not open this port yet. Become a member of the group " + access.group +
         " with this command in a terminal, then log out and in again:\r\n"
         "sudo usermod -aG " +
         access.group + " $USER";
}

/// Tells device, product and rights of `port` in its row of the list.
void Describe(QComboBox& list, int row, const std::filesystem::path& folder, const std::string& port) {
  const std::filesystem::path device = *ports::DeviceOf(folder, port);
  const QString known = qt::ShowName(PortText(port));
  const QString rights = qt::Show(RightsTo(device));
  const QString shown = known + (rights.isEmpty() ? QString() : u'\n' + rights);
  list.setItemData(row, qt::PlainTip(shown), Qt::ToolTipRole);
  list.setItemData(row, shown, Qt::AccessibleDescriptionRole);
  list.setItemData(row, rights, kRights);
  list.setItemData(row, known, kDevice);
  list.setItemData(row, serial::IsUsb(device), kAdapter);
}

}  // namespace

Step2::Step2() : PageWindow(4485, 2730) {}

void Step2::Form_Load() {
  Label1 = MakeLabel(this, "Label1", "Choose a COM port");
  Label2 = MakeWrappedLabel(this, "Label2");
  Label2->setText(qt::Show(kNote));
  cboComPort = new QComboBox(this);
  cboComPort->setObjectName(QStringLiteral("cboComPort"));
  cboComPort->setMaxVisibleItems(ports::kLastPort + 1);
  Label1->setBuddy(cboComPort);
  cboComPort->setAccessibleName(Label1->text());
  lblDevice = MakeLabel(this, "lblDevice", {});
  lblKnown = MakeWrappedLabel(this, "lblKnown");
  lblKnown->hide();
  lblRights = MakeWrappedLabel(this, "lblRights");
  lblRights->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  lblRights->hide();
  mWatch = new QTimer(this);
  mWatch->setObjectName(QStringLiteral("watch"));
  mWatch->setInterval(kWatchMilliseconds);
  connect(mWatch, &QTimer::timeout, this, [this] {
    // In an opened list no row moves under the pointer.
    if (QApplication::activePopupWidget() == nullptr) AddPorts();
  });
  connect(cboComPort, &QComboBox::currentIndexChanged, this, [this] {
    ShowKnown({});
    ShowRights();
  });

  auto* const rows = new QVBoxLayout(this);
  rows->setContentsMargins(Pixels(10), Pixels(6), Pixels(8), Pixels(4));
  rows->setSpacing(Pixels(3));
  auto* const choice = new QHBoxLayout;
  choice->setSpacing(Pixels(10));
  choice->addWidget(Label1);
  choice->addWidget(cboComPort, 1);
  rows->addLayout(choice);
  rows->addWidget(lblDevice);
  rows->addWidget(lblKnown, 1);
  rows->addWidget(Label2, 1);
  rows->addWidget(lblRights, 1);
}

void Step2::BeforePageShow(CWizard&, std::int16_t currentStep) {
  ShowKnown({});
  if (currentStep == 1) ListPorts();
}

void Step2::ListPorts() {
  cboComPort->clear();
  cboComPort->addItem(qt::Show("None"));
  AddPorts();
  const int selected = gComPort.empty() && !mShown
                           ? OnlyAdapter()
                           : cboComPort->findText(qt::Show(gComPort), Qt::MatchFixedString);
  cboComPort->setCurrentIndex(std::max(selected, 0));
  mShown = true;
}

int Step2::OnlyAdapter() const {
  int found = 0;
  for (int row = 1; row < cboComPort->count(); ++row) {
    if (!cboComPort->itemData(row, kAdapter).toBool()) continue;
    if (found != 0) return 0;
    found = row;
  }
  return found;
}

void Step2::ShowKnown(const std::string& text) {
  lblKnown->setText(qt::Show(text));
  SettleNotes();
}

void Step2::SettleNotes() {
  const bool known = !lblKnown->text().isEmpty();
  const bool rights = !lblRights->text().isEmpty();
  lblKnown->setVisible(known && !rights);
  lblRights->setVisible(rights);
  Label2->setVisible(!known && !rights);
}

void Step2::AddPorts() {
  const std::filesystem::path& folder = program::This().folder;
  int row = 1;
  for (int number = 1; number <= ports::kLastPort; ++number) {
    const std::string name = "COM" + std::to_string(number);
    const bool listed = cboComPort->itemText(row) == qt::Show(name);
    const bool there = ports::PortExists(folder, name);
    if (!listed && !there) continue;
    if (!listed) cboComPort->insertItem(row, qt::Show(name));
    if (there) Describe(*cboComPort, row, folder, name);
    ++row;
  }
  ShowRights();
}

void Step2::ShowRights() {
  const QString rights = cboComPort->currentData(kRights).toString();
  lblDevice->setText(cboComPort->currentData(kDevice).toString());
  lblRights->setText(rights);
  SettleNotes();
  cboComPort->setToolTip(cboComPort->currentData(Qt::ToolTipRole).toString());
  cboComPort->setAccessibleDescription(cboComPort->toolTip());
}

void Step2::showEvent(QShowEvent*) {
  mWatch->start();
}

void Step2::hideEvent(QHideEvent*) {
  mWatch->stop();
}

void Step2::BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) {
  if (nextStep != wizard.CurrentStep() + 1) {
    if (!gComPort.empty()) CloseConnection();
    return;
  }
  if (cboComPort->currentIndex() < 1) {
    GoOnWithoutPort();
    return;
  }
  gComPort = qt::Read(cboComPort->currentText());
  wizard.Frozen(true);
  lblDevice->setText(QStringLiteral("Asking the mount ..."));
  wizard.Frame().ShowLock();
  const bool found = FindDevices();
  lblDevice->setText(cboComPort->currentData(kDevice).toString());
  ShowKnown(LastOpeningHint());
  wizard.Frozen(false);
  if (!found) cancel = true;
}

}  // namespace tarnwick
