#include "pages/Step1.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "link/Devices.h"
#include "platform/files.h"
#include "platform/program.h"
#include "platform/qt/QtText.h"
#include "programmer/DeviceClass.h"
#include "settings/Settings.h"
#include "widgets/Controls.h"
#include "widgets/Scale.h"

namespace tarnwick {

namespace {

constexpr std::string_view kNotKept =
    "The folder of this program cannot be written: settings, packages and the record of your runs will be "
    "lost.";

}  // namespace

Step1::Step1() : PageWindow(4485, 2730) {}

void Step1::Form_Load() {
  Label1 = {MakeWrappedLabel(this, "Label1_0"), MakeWrappedLabel(this, "Label1_1"),
            MakeWrappedLabel(this, "Label1_2")};
  lblFolder = MakeWrappedLabel(this, "lblFolder");
  Label2 = MakeLabel(this, "Label2", "Choose a Device");
  cboDevice = new QComboBox(this);
  cboDevice->setObjectName(QStringLiteral("cboDevice"));
  Label2->setBuddy(cboDevice);
  cboDevice->setAccessibleName(Label2->text());
  QFont heading = font();
  heading.setPixelSize(heading.pixelSize() * 14 / 11);
  heading.setWeight(QFont::DemiBold);
  Label1[0]->setFont(heading);

  auto* const rows = new QVBoxLayout(this);
  rows->setContentsMargins(Pixels(10), Pixels(6), Pixels(10), Pixels(8));
  rows->addWidget(Label1[0]);
  rows->addSpacing(Pixels(6));
  rows->addWidget(Label1[1]);
  rows->addStretch(1);
  auto* const choice = new QHBoxLayout;
  choice->setSpacing(Pixels(10));
  choice->addWidget(Label2);
  choice->addWidget(cboDevice, 1);
  rows->addLayout(choice);
  rows->addStretch(1);
  rows->addWidget(lblFolder);
  rows->addWidget(Label1[2]);
}

void Step1::BeforePageShow(CWizard&, std::int16_t) {
  Label1[0]->setText(qt::Show("Welcome to the Halcyrion\r\nMotor Control Update Program"));
  Label1[1]->setText(qt::Show(
      "This program allows you to download new firmware from the Halcyrion website and update your motor "
      "control board or accessories with the latest firmware available."));
  lblFolder->setText(qt::Show(kNotKept));
  lblFolder->setVisible(!files::IsWritable(program::This().folder));
  Label1[2]->setText(qt::Show("Press Next to continue"));
  cboDevice->clear();
  cboDevice->addItem(qt::Show("Motor Control Board"));
  if (gTypeOverride) cboDevice->addItem(qt::Show("Accessories"));
  cboDevice->setCurrentIndex(gDeviceClass);
}

void Step1::BeforePageHide(CWizard&, std::int16_t, bool&) {
  ChooseDeviceClass(cboDevice->currentIndex());
}

}  // namespace tarnwick
