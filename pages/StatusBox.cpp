#include "StatusBox.h"

#include "link/Devices.h"

namespace tarnwick {

StatusBox::StatusBox(QWidget* parent) : TextBox(parent, "txtStatus", QStringLiteral("Status report")) {}

void StatusBox::ShowReport() {
  Text(BuildStatusReport());
}

void StatusBox::Refresh() {
  TextNow("Determining Status ...");
  RefreshDevices();
  ShowReport();
}

}  // namespace tarnwick
