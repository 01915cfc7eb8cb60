// The controls of the web update window, and where they stand.
#include <QFrame>
#include <QGridLayout>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>

#include "PackageGrid.h"
#include "settings/HelpTopics.h"
#include "webupdate/frmWebUpdate.h"
#include "widgets/Controls.h"
#include "widgets/ProgressBar.h"
#include "widgets/Scale.h"

namespace tarnwick {
namespace {

/// Client size at the base font.
constexpr int kWidth = 520;
constexpr int kHeight = 400;
constexpr int kLeastWidth = 340;
constexpr int kLeastHeight = 240;
/// What the window's border takes of the screen, both sides together.
constexpr int kEdge = 30;
constexpr int kButtonWidth = 84;

/// A frame named `name` round `inside`.
QFrame* Framed(QWidget* parent, const char* name, QWidget* inside) {
  auto* const frame = new QFrame(parent);
  frame->setObjectName(QLatin1String(name));
  frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
  auto* const layout = new QVBoxLayout(frame);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(inside);
  return frame;
}

}  // namespace

void frmWebUpdate::MakeControls() {
  setObjectName(QStringLiteral("frmWebUpdate"));
  Grid = new PackageGrid(this, mCatalogue);
  Grid->onChoose = [this] { ShowCurrentRow(); };
  txtDescription = new TextBox(this, "txtDescription", QStringLiteral("About the selected package"));
  txtDescription->setFrameShape(QFrame::NoFrame);
  mBar = new ProgressBar(this);
  mBar->setFixedHeight(Pixels(18));
  cmdHelp = MakeButton(this, "cmdHelp", "Help", [] { ShowHelpTopic("WebUpdates.htm"); });
  cmdDownload = MakeButton(this, "cmdDownload", "Download", [this] { cmdDownload_Click(); });
  cmdRemove = MakeButton(this, "cmdRemove", "Remove", [this] { cmdRemove_Click(); });
  cmdDone = MakeButton(this, "cmdDone", "Done", [this] { cmdDone_Click(); });
  cmdCancel = MakeButton(this, "cmdCancel", "Cancel", [this] { reject(); });
  cmdCancel->hide();
  lblAnswer = MakeWrappedLabel(this, "lblAnswer");
  lblAnswer->hide();
  connect(new QShortcut(Qt::Key_F1, this), &QShortcut::activated, cmdHelp, &QPushButton::click);
  LayOutControls();
  OrderControls();
}

void frmWebUpdate::LayOutControls() {
  auto* const buttons = new QVBoxLayout;
  buttons->setSpacing(Pixels(6));
  for (QPushButton* const button : {cmdHelp, cmdDownload, cmdRemove, cmdDone, cmdCancel}) {
    button->setFixedSize(Pixels(kButtonWidth), Pixels(24));
    buttons->addWidget(button);
  }
  buttons->addStretch(1);
  auto* const grid = new QGridLayout(this);
  grid->setContentsMargins(Pixels(8), Pixels(8), Pixels(8), Pixels(8));
  grid->setSpacing(Pixels(8));
  grid->addWidget(Framed(this, "Frame1", Grid), 0, 0);
  grid->addLayout(buttons, 0, 1);
  grid->addWidget(mBar, 1, 0);
  grid->addWidget(lblAnswer, 2, 0, 1, 2);
  grid->addWidget(Framed(this, "Frame2", txtDescription), 3, 0, 1, 2);
  grid->setRowStretch(0, 5);
  grid->setRowStretch(3, 3);
  const QSize room = screen()->availableSize() - QSize(Pixels(kEdge), Pixels(kEdge));
  setMinimumSize(QSize(Pixels(kLeastWidth), Pixels(kLeastHeight)).boundedTo(room));
  resize(QSize(Pixels(kWidth), Pixels(kHeight)).boundedTo(room));
}

void frmWebUpdate::OrderControls() {
  setTabOrder(Grid, cmdHelp);
  setTabOrder(cmdHelp, cmdDownload);
  setTabOrder(cmdDownload, cmdRemove);
  setTabOrder(cmdRemove, cmdDone);
  setTabOrder(cmdDone, cmdCancel);
  setTabOrder(cmdCancel, txtDescription);
  Grid->setFocus();
}

void frmWebUpdate::CentreOnScreen() {
  const QRect area = screen()->geometry();
  move(area.left() + (area.width() - width()) / 2, area.top() + (area.height() - height()) / 2);
}

}  // namespace tarnwick
