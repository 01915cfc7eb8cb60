#include "app/App.h"

#include <QApplication>
#include <QFontInfo>
#include <QSessionManager>
#include <algorithm>
#include <cmath>

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

/// The font at which the frame has its base size, and the system font that it answers to: a user who
/// chose a larger one gets everything larger in proportion.
constexpr double kBaseFontPixels = 11.0;
constexpr double kUsualSystemFontPixels = 14.0;

void ApplyLook() {
  QApplication::setStyle(new FocusStyle);
  QFont font = QApplication::font();
  const double growth = std::max(1.0, QFontInfo(font).pixelSize() / kUsualSystemFontPixels);
  font.setPixelSize(static_cast<int>(std::lround(kBaseFontPixels * growth)));
  QApplication::setFont(font);
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
