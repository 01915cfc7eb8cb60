#include "GivingUp.h"

#include <QVBoxLayout>

#include "platform/ui.h"
#include "widgets/Controls.h"
#include "widgets/Scale.h"

namespace tarnwick {
namespace {

constexpr int kPatience = 1000;  ///< ms

}  // namespace

GivingUp::GivingUp(QWidget& window) : mWindow(window) {
  mTime.start();
}

void GivingUp::Wait() {
  if (!mBox && !mWindow.isVisible() && mTime.hasExpired(kPatience)) ShowBox();
  ui::PumpEvents();
}

void GivingUp::ShowBox() {
  mBox = std::make_unique<QDialog>(mWindow.parentWidget());
  mBox->setObjectName(QStringLiteral("frmWaiting"));
  mBox->setWindowTitle(mWindow.windowTitle());
  mBox->setWindowModality(Qt::WindowModal);
  auto* const layout = new QVBoxLayout(mBox.get());
  layout->setContentsMargins(Pixels(16), Pixels(16), Pixels(16), Pixels(12));
  layout->setSpacing(Pixels(12));
  layout->addWidget(MakeLabel(mBox.get(), "lblWaiting", "Asking the update site ..."));
  layout->addWidget(MakeButton(mBox.get(), "cmdCancel", "Cancel", [this] { GiveUp(); }), 0, Qt::AlignCenter);
  // Escape and the close box are the button.
  QObject::connect(mBox.get(), &QDialog::rejected, mBox.get(), [this] { GiveUp(); });
  mBox->show();
}

}  // namespace tarnwick
