#include "app/App.h"

#include <QApplication>
#include <QFontInfo>
#include <QIcon>
#include <QScreen>
#include <QSessionManager>
#include <algorithm>

#include "FocusStyle.h"
#include "app/ProgramSettings.h"
#include "app/TrustedKeys.h"
#include "pages/Step1.h"
#include "pages/Step2.h"
#include "pages/Step3.h"
#include "pages/Step4.h"
#include "platform/awake.h"
#include "platform/http/CurlTransport.h"
#include "platform/program.h"
#include "platform/qt/HelpWindow.h"
#include "platform/qt/InputGate.h"
#include "platform/qt/QtUser.h"
#include "platform/record.h"
#include "programmer/UnfinishedRun.h"
#include "programmer/modProgrammer.h"
#include "wizard/WizardWindow.h"
#include "wizard/modWizard.h"

namespace tarnwick {
namespace {

/// The font at which the frame has its base size, in pixels, and that size with the window's border, in
/// pixels too. All grows with the font.
constexpr int kBaseFont = 11;
constexpr QSize kBaseFrame(620, 320);

/// The desktop's own font, or on a small screen the largest at which the frame still fits.
void ApplyLook() {
  QApplication::setStyle(new FocusStyle);
  const QSize screen = QGuiApplication::primaryScreen()->availableSize();
  const int fitting = std::min(kBaseFont * screen.width() / kBaseFrame.width(),
                               kBaseFont * screen.height() / kBaseFrame.height());
  QFont font = QApplication::font();
  font.setPixelSize(std::max(kBaseFont, std::min(QFontInfo(font).pixelSize(), fitting)));
  QApplication::setFont(font);
  QApplication::setWindowIcon(QIcon(QStringLiteral(":/icon/org.tarnwick.Tarnwick.png")));
}

/// The user logs out. That asks what the close box asks, and goes on only where that ends the program.
void EndSession(QSessionManager& session, QWidget& window) {
  const bool asks = session.allowsInteraction();
  if (!asks ? gProgramming : !window.close()) session.cancel();
  if (asks) session.release();
}

template <class Page>
std::unique_ptr<IWizardPage> Make() {
  return std::make_unique<Page>();
}

}  // namespace

struct App::Parts {
  qt::QtUser user;
  qt::HelpWindow help;
  http::CurlTransport transport;
  std::unique_ptr<awake::IKeeper> awake = awake::SystemKeeper();
  WizardWindow window;
  std::unique_ptr<CWizardController> controller;  // owns the pages, which hang in the window: goes first
};

App::App(QApplication& application) {
  application.setQuitOnLastWindowClosed(false);  // the window ends the program itself
  QGuiApplication::setDesktopFileName(QStringLiteral("org.tarnwick.Tarnwick"));  // the one in packaging/
  ApplyLook();
  TrustBuiltInKey();
  qt::InputGate::Of();  // Before any window sees an event.
  mParts = std::make_unique<Parts>();
  QObject::connect(&application, &QGuiApplication::commitDataRequest, &mParts->window,
                   [this](QSessionManager& session) { EndSession(session, mParts->window); });
  record::Open(program::This().folder);
  record::Line("start: " + program::This().name + " " + program::VersionText() + ", " +
               program::SystemText());
}

App::~App() {
  record::Close();
}

void App::Start() {
  mParts->controller = Main(mParts->window, {LoadSettings, SaveSettings},
                            {Make<Step1>, Make<Step2>, Make<Step3>, Make<Step4>});
  ShowUnfinished();
}

void App::TrustBuiltInKey() {
  TrustBuiltInKeys();
}

WizardWindow& App::Window() {
  return mParts->window;
}

}  // namespace tarnwick
