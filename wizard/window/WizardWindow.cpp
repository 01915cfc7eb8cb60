#include "wizard/WizardWindow.h"

#include <qdrawutil.h>

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QPainter>
#include <QScreen>
#include <QWindow>
#include <algorithm>
#include <chrono>

#include "SplashPicture.h"
#include "platform/qt/QtText.h"
#include "platform/ui.h"
#include "widgets/Scale.h"
#include "wizard/CWizard.h"
#include "wizard/PageWindow.h"

namespace tarnwick {
namespace {

static_assert(kRoomTwips == 15 * SplashPicture::kHeight);
constexpr int kButtonWidthTwips = 1200;
constexpr int kButtonHeightTwips = 345;
/// A page that is locked for less than this does not turn grey: it would only flicker.
constexpr std::chrono::milliseconds kGreyAfter{100};

/// What a screen reader reads of a caption: arrows and blanks are for the eye.
QString SpokenOf(const QString& caption) {
  return QString(caption).remove(u'<').remove(u'>').simplified();
}

PageWindow& WindowOf(IWizardPage& page) {
  return dynamic_cast<PageWindow&>(page);
}

QRect RectOf(const FrameRect& rect) {
  const QPoint topLeft(Scaled(rect.left), Scaled(rect.top));
  return {topLeft, QSize(Scaled(rect.Right()) - topLeft.x(), Scaled(rect.Bottom()) - topLeft.y())};
}

}  // namespace

WizardWindow::WizardWindow() = default;

WizardWindow::~WizardWindow() = default;

void WizardWindow::MakeButton(FrameButton button, const char* name, const std::string& caption) {
  Button& made = At(button);
  made.widget = new QPushButton(this);
  made.widget->setObjectName(QLatin1String(name));
  made.widget->setAutoDefault(false);
  made.widget->installEventFilter(this);
  made.tabPosition = static_cast<int>(button);
  Caption(button, caption);
}

void WizardWindow::LoadFrame() {
  if (picPage != nullptr) return;
  setObjectName(QStringLiteral("CWizard"));
  setWindowFlag(Qt::WindowMaximizeButtonHint, false);
  MakeButton(FrameButton::cmdHelp, "cmdHelp", "Help");
  MakeButton(FrameButton::cmdStepBack, "cmdStepBack", "<  Back");
  MakeButton(FrameButton::cmdStepFwd, "cmdStepFwd", "Next  >");
  MakeButton(FrameButton::cmdTerminate, "cmdTerminate", "Exit");
  At(FrameButton::cmdHelp).widget->setToolTip(QStringLiteral("F1"));
  At(FrameButton::cmdStepBack).widget->setToolTip(QStringLiteral("Alt+Left"));
  At(FrameButton::cmdStepFwd).widget->setToolTip(QStringLiteral("Alt+Right"));
  At(FrameButton::cmdTerminate).widget->setToolTip(QStringLiteral("Esc"));
  connect(At(FrameButton::cmdHelp).widget, &QPushButton::clicked, [this] { mWizard->cmdHelp_Click(); });
  connect(At(FrameButton::cmdStepBack).widget, &QPushButton::clicked,
          [this] { mWizard->cmdStepBack_Click(); });
  connect(At(FrameButton::cmdStepFwd).widget, &QPushButton::clicked, [this] { mWizard->cmdStepFwd_Click(); });
  connect(At(FrameButton::cmdTerminate).widget, &QPushButton::clicked,
          [this] { mWizard->cmdTerminate_Click(); });
  picPage = new QWidget(this);
  picPage->setObjectName(QStringLiteral("picPage"));
  mGreying.setSingleShot(true);
  mGreying.setInterval(kGreyAfter);
  connect(&mGreying, &QTimer::timeout, [this] { picPage->setEnabled(false); });
  picSplash = new SplashPicture(this);
  picSplash->setObjectName(QStringLiteral("picSplash"));
  lblShutdown = new QLabel(QStringLiteral("Shutting Down ..."), this);
  lblShutdown->setObjectName(QStringLiteral("lblShutdown"));
  lblShutdown->setFrameShape(QFrame::StyledPanel);
  lblShutdown->setAutoFillBackground(true);
  lblShutdown->setAlignment(Qt::AlignCenter);
  lblShutdown->setMargin(Scaled(10));
  lblShutdown->hide();
  qt::InputGate::Of().Watch(*this, *this);
}

void WizardWindow::ShowFrame() {
  show();
  windowHandle()->installEventFilter(this);
}

void WizardWindow::LoadPage(IWizardPage& page) {
  WindowOf(page).Form_Load();
}

WindowHandle WizardWindow::AttachPage(IWizardPage& page) {
  PageWindow& window = WindowOf(page);
  QWidget* const before = window.parentWidget();
  window.setParent(picPage);
  window.move(0, 0);
  return before;
}

void WizardWindow::DetachPage(IWizardPage& page, WindowHandle oldParent) {
  WindowOf(page).setParent(static_cast<QWidget*>(oldParent));
}

void WizardWindow::UnloadPage(IWizardPage& page) {
  PageWindow& window = WindowOf(page);
  window.hide();
  window.Form_Unload();
}

void WizardWindow::SetPageVisible(IWizardPage& page, bool visible) {
  WindowOf(page).setVisible(visible);
}

void WizardWindow::LayoutFrame(IWizardPage* page, bool centre, std::optional<FrameButton> lastButton) {
  if (page == nullptr) return;
  const PageWindow& window = WindowOf(*page);
  mLayout = LayOut({SplashPicture::kWidth, SplashPicture::kHeight},
                   {kButtonWidthTwips / 15, kButtonHeightTwips / 15},
                   {Unscaled(window.width()), Unscaled(window.height())});
  Place(mLayout);
  const QSize wanted(Scaled(mLayout.client.width), Scaled(mLayout.client.height));
  if (wanted == size()) return;
  setFixedSize(wanted);
  if (!centre) return;
  CentreOnScreen();
  CenterCursorOn(lastButton);
}

void WizardWindow::Place(const FrameLayout& layout) {
  picSplash->setGeometry(RectOf(layout.picSplash));
  picPage->setGeometry(RectOf(layout.picPage));
  At(FrameButton::cmdHelp).widget->setGeometry(RectOf(layout.cmdHelp));
  At(FrameButton::cmdStepBack).widget->setGeometry(RectOf(layout.cmdStepBack));
  At(FrameButton::cmdStepFwd).widget->setGeometry(RectOf(layout.cmdStepFwd));
  At(FrameButton::cmdTerminate).widget->setGeometry(RectOf(layout.cmdTerminate));
  update();
}

void WizardWindow::CentreOnScreen() {
  const QRect area = screen()->geometry();
  const QSize outer = frameGeometry().size();
  move(area.left() + (area.width() - outer.width()) / 2, area.top() + (area.height() - outer.height()) / 2);
}

void WizardWindow::CenterCursorOn(std::optional<FrameButton> button) {
  if (!button) return;
  const QPushButton& widget = *At(*button).widget;
  QCursor::setPos(widget.mapToGlobal(QPoint(widget.width() / 2, widget.height() / 2)));
}

bool WizardWindow::Enabled(FrameButton button) const {
  return At(button).widget->isEnabled();
}
void WizardWindow::Enabled(FrameButton button, bool enabled) {
  At(button).widget->setEnabled(enabled);
}
std::string WizardWindow::Caption(FrameButton button) const {
  return At(button).caption;
}

void WizardWindow::Caption(FrameButton button, const std::string& caption) {
  At(button).caption = caption;
  At(button).widget->setText(qt::Show(caption));
  At(button).widget->setAccessibleName(SpokenOf(At(button).widget->text()));
}

bool WizardWindow::Default(FrameButton button) const {
  return At(button).widget->isDefault();
}
void WizardWindow::Default(FrameButton button, bool isDefault) {
  if (isDefault) {
    for (const Button& other : mButtons) other.widget->setDefault(false);  // there is one at most
  }
  At(button).widget->setDefault(isDefault);
}

void WizardWindow::TabPosition(FrameButton button, int position) {
  At(button).tabPosition = position;
  ApplyTabOrder();
}

void WizardWindow::ApplyTabOrder() {
  std::array<Button, 4> sorted = mButtons;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Button& a, const Button& b) { return a.tabPosition < b.tabPosition; });
  for (std::size_t i = 1; i < sorted.size(); ++i) setTabOrder(sorted[i - 1].widget, sorted[i].widget);
}

void WizardWindow::FocusButton(FrameButton button) {
  At(button).widget->setFocus();
}

void WizardWindow::PageAreaTabPosition(int) {
  // Pages are attached after the buttons were made, so the page area is last in the order already,
  // and the order is a circle.
}

void WizardWindow::FocusPageArea() {
  mWizard->picPage_GotFocus();
}

void WizardWindow::FocusPage(IWizardPage& page) {
  PageWindow& window = WindowOf(page);
  QWidget* const first = window.FirstControl();
  (first != nullptr ? first : &window)->setFocus(Qt::OtherFocusReason);
}

void WizardWindow::FrameCaption(const std::string& caption) {
  setWindowTitle(qt::ShowName(caption));
}

void WizardWindow::SetWaitPointer(bool on) {
  if (on) {
    setCursor(Qt::WaitCursor);
  } else {
    unsetCursor();
  }
}

void WizardWindow::PumpEvents() {
  mLocked ? ui::PumpEvents() : ui::PumpPainting();
}
void WizardWindow::RequestClose() {
  close();
}

void WizardWindow::ShowShutdown() {
  lblShutdown->adjustSize();
  lblShutdown->move(rect().center() - lblShutdown->rect().center());
  lblShutdown->show();
  lblShutdown->raise();
}

void WizardWindow::closeEvent(QCloseEvent* event) {
  bool cancel = false;
  mWizard->Form_QueryUnload(cancel);
  event->setAccepted(!cancel);
  if (!cancel) mWizard->Form_Unload();
}

void WizardWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  qDrawShadePanel(&painter, picSplash->geometry().adjusted(-1, -1, 1, 1), palette(), true, 1);
  const int top = Scaled(mLayout.bevelTop);
  const int left = Scaled(mLayout.bevelLeft);
  const int right = Scaled(mLayout.bevelRight);
  painter.setPen(palette().color(QPalette::Dark));
  painter.drawLine(left, top, right - 1, top);
  painter.setPen(palette().color(QPalette::Light));
  painter.drawLine(left, top + 1, right - 1, top + 1);
}

}  // namespace tarnwick
