#include "StatusBox.h"

#include <QScrollBar>
#include <QTextBlock>

#include "link/Devices.h"
#include "platform/qt/QtText.h"
#include "wizard/CWizard.h"
#include "wizard/modWizard.h"

namespace tarnwick {

StatusBox::StatusBox(QWidget* parent) : TextBox(parent, "txtStatus", QStringLiteral("Status report")) {}

void StatusBox::ShowReport() {
  Text(BuildStatusReport());
  LookAt(mRow);
}

void StatusBox::LookAt(std::int32_t row) {
  mRow = row <= gDeviceCount() ? row : 0;
  if (mRow == 0) return verticalScrollBar()->setValue(0);
  const QTextDocument& report = *document();
  QTextBlock block = report.begin();
  const QString wanted = qt::Show("Device: " + gDevices[mRow].Name);
  while (block.isValid() && block.text() != wanted) block = block.next();
  if (block.isValid()) verticalScrollBar()->setValue(block.firstLineNumber());
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
