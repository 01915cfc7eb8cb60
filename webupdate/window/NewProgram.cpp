// The window's part in the program's own renewal.
#include "GivingUp.h"
#include "platform/program.h"
#include "platform/qt/QtText.h"
#include "platform/ui.h"
#include "webupdate/ProgramInstaller.h"
#include "webupdate/SelfUpdate.h"
#include "webupdate/frmWebUpdate.h"
#include "widgets/ProgressBar.h"

namespace tarnwick {

bool frmWebUpdate::OfferNewProgram() {
  if (!CheckForNewProgram(mCatalogue)) return false;
  if (const WhyNot why = MayInstall(); why.refusal != Refusal::None) {
    ui::MessageBox(MayNotText(why));
    return false;
  }
  if (ui::MessageBox(UpdateQuestion(mCatalogue), ui::Buttons::YesNo, ui::Icon::Question) != ui::Answer::Yes)
    return false;
  cmdDone->setEnabled(false);
  mTransfer = true;
  ui::PumpEvents();
  // Before its time, so that the progress can be seen.
  show();
  repaint();
  ui::PumpEvents();
  WhyNot why;
  BeginGivingUp();
  const bool installed = InstallNewProgram(why);
  EndGivingUp();
  mTransfer = false;
  if (installed) return true;
  // A window that was opened while the question was on view is told as one that was open before.
  ui::MessageBox(MayNotText(why));
  hide();
  ExpectedSize = 0;
  HTTP_Progress(0);
  cmdDone->setEnabled(true);
  return false;
}

bool frmWebUpdate::InstallNewProgram(WhyNot& why) {
  ProgramInstaller installer({
      .expect = [this](std::int32_t size) { ExpectedSize = size; },
      .progress = [this](std::int32_t count) { HTTP_Progress(count); },
      .hourglass = [this](bool on) { on ? setCursor(Qt::WaitCursor) : unsetCursor(); },
      .pacifier = [this](const std::string& text) { mBar->Label(qt::Show(text)); },
  });
  const bool installed = installer.InstallNewProgram(mCatalogue);
  why = installer.Why();
  return installed;
}

}  // namespace tarnwick
