#include "StatusBox.h"

#include "link/Devices.h"
#include "wizard/CWizard.h"
#include "wizard/modWizard.h"

namespace tarnwick {

StatusBox::StatusBox(QWidget* parent) : TextBox(parent, "txtStatus", QStringLiteral("Status report")) {}

void StatusBox::ShowReport() {
  Text(BuildStatusReport());
}

void StatusBox::ShowWaiting() {
  TextNow("Determining Status ...");
  gController->WizardHandle().Frame().ShowLock();
}

void StatusBox::Refresh() {
  ShowWaiting();
  RefreshDevices();
  ShowReport();
}

}  // namespace tarnwick
