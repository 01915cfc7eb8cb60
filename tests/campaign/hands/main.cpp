// Seeded hands on the real window, over the simulated mount on virtual time, before a judge who knows from
// what the hands did what was asked. docs/reliability.md tells what is played and how one visit is repeated.
#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTimer>
#include <array>
#include <iostream>

#include "Images.h"
#include "Judge.h"
#include "app/App.h"
#include "firmware/QALclass.h"
#include "mount/Mount.h"
#include "platform/awake.h"
#include "platform/clock.h"
#include "platform/help.h"
#include "platform/program.h"
#include "platform/qt/QtUser.h"
#include "support/CoreLink.h"
#include "support/HttpDouble.h"
#include "support/ResetGlobals.h"
#include "support/TempFolder.h"
#include "support/VirtualLine.h"
#include "wizard/WizardWindow.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {
namespace {

using namespace std::chrono_literals;

bool gTell = false;            ///< Each deed and box of the visit is told.
Milliseconds gBegin{1000000};  ///< When the next visit begins.

void Tell(Milliseconds now, const std::string& what) {
  if (gTell) std::cout << now.count() << " " << what << std::endl;
}

constexpr Milliseconds kTick = 10ms;
constexpr Milliseconds kRecovers = 1000ms;
/// The help shows nothing: its own window is no part of this campaign.
struct NoHelp final : help::IHelpViewer {
  NoHelp() { Seam<help::IHelpViewer>::Install(*this); }
  ~NoHelp() override { Seam<help::IHelpViewer>::Uninstall(); }
  void Show(std::string_view) override {}
  void ShowMessage(std::string_view) override {}
};

/// One visit: the whole program, started anew in a folder of its own.
class Visit final : ui::IUserInterface, clock::IClock {
 public:
  explicit Visit(std::uint32_t seed);
  ~Visit() override;
  /// Plays it to its end and gives what the judge found.
  const Judge& Play();

 private:
  static void Prepare(const TempFolder& folder);
  /// When this visit begins: what was pressed in an earlier one is long ago.
  Milliseconds Begin() {
    line.now += gBegin;
    return Now();
  }
  Milliseconds Now() const { return std::chrono::duration_cast<Milliseconds>(line.now); }
  View See(QPoint place) const;
  QPoint Aim();
  void NextTick();
  void Tick();
  void RestAnswers();
  void CheckRest();
  void CheckMemory();
  QWidget* Top() const;
  template <class Widget>
  Widget* OnView(const char* name) const;
  std::set<std::int32_t> Chosen() const;
  Image Held(int address) { return Read(mount.Devices().at(static_cast<std::uint8_t>(address)).Words()); }
  template <class Show>
  auto Boxed(const std::string& text, bool question, Show&& show);

  ui::Answer MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) override;
  std::string InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) override;
  void PumpEvents() override;
  void PumpPainting() override;
  void Beep() override {}
  std::tm LocalNow() override { return {}; }
  std::chrono::milliseconds SteadyNow() override { return Now(); }
  void Sleep(std::chrono::milliseconds duration) override { line.now += duration; }

  std::mt19937 dice;
  TempFolder folder;
  mount::Mount mount;
  VirtualLine line{mount};
  App app;
  CoreLink link{line, line};
  HttpDouble site;
  NoHelp help;
  qt::QtUser real;
  Judge judge;
  Hands hands;
  QObject ticks;
  std::string file;
  std::map<int, Image> first;  ///< What each device held when the visit began.
  int within = 0;              ///< Boxes that are up.
  bool webUp = false;
  QWidget* lookedFrom = nullptr;  ///< Who was in charge when the program pumped last.
  bool looking = false;           ///< The program pumps, or calls the link.
  bool ended = false;
  Milliseconds busy{};  ///< When it last did something.
  Milliseconds answered{};
  Milliseconds rested{};  ///< When it was live last.
  program::Ending ending{[this] {
    ended = true;
    hands.Rest();
  }};
};

void Visit::Prepare(const TempFolder& folder) {
  ResetGlobals();
  gController = nullptr;
  program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
  std::filesystem::create_directory(folder / "ports");
  std::filesystem::create_symlink("/dev/null", folder / "ports/COM5");
  std::filesystem::create_directory(folder / "MotorControllers");
  for (const std::string& name : kPackages) WriteFile(folder / "MotorControllers" / name, Content(name));
  WriteFile(folder / "MotorControllers/B.txt", "Note of B.qal\r\n");
  WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nCOMport=COM5\r\n");
  std::filesystem::current_path(folder.Path());
}

Visit::Visit(std::uint32_t seed) : dice(seed), app((Prepare(folder), *qApp)), hands(seed, Begin()) {
  Seam<program::Ending>::Install(ending);
  Seam<awake::IKeeper>::Uninstall();
  Seam<ui::IUserInterface>::Install(*this);
  Seam<clock::IClock>::Install(*this);
  line.line.setup = {.paced = true, .latency = Milliseconds(dice() % 40)};
  for (const int address : {16, 17}) {
    mount.Put(static_cast<std::uint8_t>(address),
              {.model = 5, .revision = kRevision, .bootVersion = 2, .major = 4, .minor = 2});
    first[address] = Read(mount.Devices().at(static_cast<std::uint8_t>(address)).Words());
  }
  site.replies["/firmware/catalogue/list.txt"] = "@C.qal,2005-03-01,2000\r\nAbout C\r\n";
  link.before = [this](const std::string&) {
    // What the program does on its way out nobody sees.
    if (ended || gQAL == nullptr) return false;
    judge.Calls(See({}));
    if (gController->WizardHandle().Frozen() && OnView<QWidget>("picPage")->isEnabled())
      judge.Fail("the link is called before the lock is seen");
    return false;
  };
  link.after = [this](const std::string& name, std::int32_t address, std::int32_t result) {
    busy = Now();
    hands.CatchUp(Now());
    if (name != "enter" && name != "start" && name != "send" && name != "end") return;
    Tell(Now(), name + " " + std::to_string(address));
    judge.Changed(name, address, result);
    const bool stands = Held(address) == Whole(judge.Package(), address);
    if (name == "end" && result == 1 && !stands) judge.Fail("ended with another image than chosen");
  };
  hands.aim = [this] { return Aim(); };
  hands.done = [this](const Deed& deed) {
    const View view = See(deed.place);
    constexpr std::array kNames{"key down ", "key up ", "mouse down ", "mouse up ", "wheel ", "close "};
    Tell(deed.at, kNames[static_cast<std::size_t>(deed.kind)] +
                      QKeySequence(deed.key | static_cast<int>(deed.modifiers)).toString().toStdString() +
                      (deed.repeat ? " again" : "") + " on " + view.pointed + ", focus " + view.focus +
                      (view.live ? ", live" : ""));
    judge.Done(deed, view);
  };
}

Visit::~Visit() {
  Seam<program::Ending>::Uninstall();
  Seam<ui::IUserInterface>::Uninstall();
  Seam<clock::IClock>::Uninstall();
  gController = nullptr;
  gBegin = Now() + 10s;
  std::filesystem::current_path(std::filesystem::temp_directory_path());
}

template <class Widget>
Widget* Visit::OnView(const char* name) const {
  for (Widget* const each :
       const_cast<Visit*>(this)->app.Window().findChildren<Widget*>(QLatin1String(name))) {
    if (each->isVisible()) return each;
  }
  return nullptr;
}

QWidget* Visit::Top() const {
  QWidget* const modal = QApplication::activeModalWidget();
  return modal != nullptr ? modal : &const_cast<Visit*>(this)->app.Window();
}

std::set<std::int32_t> Visit::Chosen() const {
  const auto* const list = OnView<QListWidget>("lstDevices");
  if (list == nullptr || list->selectedItems().isEmpty()) return {};
  const QString name = list->selectedItems().front()->text();
  if (name == QLatin1String("All Devices")) return {16, 17};
  return {name.startsWith(QLatin1String("Az"), Qt::CaseInsensitive) ? 16 : 17};
}

View Visit::See(QPoint place) const {
  QWidget& window = const_cast<Visit*>(this)->app.Window();
  View view{
      .running = gProgramming || gVerifying, .frameActive = window.isActiveWindow(), .chosen = Chosen()};
  if (const auto* const list = OnView<QListWidget>("lstFirmware"); list && !list->selectedItems().isEmpty()) {
    view.package = list->selectedItems().front()->text().toStdString();
  }
  view.page = OnView<QListWidget>("lstDevices") != nullptr    ? 4
              : OnView<QListWidget>("lstFirmware") != nullptr ? 3
                                                              : 0;
  if (view.page == 4 && gQAL != nullptr) view.package = gQAL->RealFilename().filename();
  view.live = within == 0 && !looking && Top() == &window && !gController->WizardHandle().Frozen();
  if (window.focusWidget() != nullptr) view.focus = window.focusWidget()->objectName().toStdString();
  QWidget* const under = QApplication::widgetAt(place);
  if (under != nullptr) view.pointed = under->objectName().toStdString();
  for (const char* const name : {"cmdProgram", "cmdWebUpdate"}) {
    const auto* const button = OnView<QAbstractButton>(name);
    if (button != nullptr && button->isEnabled()) view.buttons.insert(name);
  }
  return view;
}

/// Mostly where there is something: a button, a row.
QPoint Visit::Aim() {
  QWidget* const top = Top();
  std::vector<QWidget*> places;
  for (QWidget* const each : top->findChildren<QWidget*>()) {
    const bool inside = each->isVisible() && each->window() == top;
    if (inside && (qobject_cast<QAbstractButton*>(each) || each->inherits("QAbstractScrollArea"))) {
      places.push_back(each);
      const QString name = each->objectName();
      for (const char* const often : {"cmdStepFwd", "lstDevices", "cmdProgram"}) {
        if (name == QLatin1String(often)) places.insert(places.end(), 3, each);
      }
    }
  }
  const QWidget* const place = places.empty() ? top : places[dice() % places.size()];
  const int y =
      place->inherits("QAbstractItemView") ? 8 + static_cast<int>(dice() % 50) : place->height() / 2;
  const QPoint at = place->mapToGlobal(QPoint(place->width() / 2, std::min(y, place->height() - 2)));
  return at;
}

/// Comes round in each loop of events, also in one within another. While the program only looks what has been
/// done, time stands still.
void Visit::NextTick() {
  QTimer::singleShot(0, &ticks, [this] {
    NextTick();
    if (!looking) return Tick();
    if (Top() == lookedFrom || Top()->objectName() != QLatin1String("frmWebUpdate")) return;
    judge.Fail("the web window came up within the program's work");
    static_cast<QDialog*>(Top())->reject();
  });
}

void Visit::Tick() {
  line.now += kTick;
  // As a window manager does: the keyboard goes to what is left when a window goes.
  if (QGuiApplication::focusWindow() == nullptr) Top()->activateWindow();
  if (hands.Resting()) RestAnswers();
  // A program that waits sees each thing before the next is done, as long as the same window is in charge.
  for (const QWidget* const top = Top(); Top() == top && hands.Next(Now());) hands.Deliver();
  if (ended) return;
  const bool web = Top()->objectName() == QLatin1String("frmWebUpdate");
  if (web && !std::exchange(webUp, true)) judge.WebOpens();
  if (Top() == &app.Window()) webUp = false;
  if (within > 0 || Top() != &app.Window()) {
    rested = Now();
    return;
  }
  CheckRest();
  judge.Idle(See({}));
}

/// With the hands at rest whatever is up still has to be answered: as a user would who wants to leave it.
void Visit::RestAnswers() {
  if (Top() == &app.Window() || Now() - std::max(busy, answered) < 500ms) return;
  if (Now() - busy > 60s) {
    judge.Fail("what is up cannot be answered");
    return static_cast<QDialog*>(Top())->reject();
  }
  answered = Now();
  hands.Tap(Now() + 400ms, Qt::Key_Escape, {}, 50ms);
}

/// What is amiss with the window, but for the time that it may take to be live again.
void Visit::CheckRest() {
  const QWidget* const focus = app.Window().focusWidget();
  const bool locked = gController->WizardHandle().Frozen();
  const bool lost = focus == nullptr || !focus->isEnabled() || !focus->isVisible();
  if (!locked && !lost) rested = Now();
  if (Now() - std::max(busy, rested) >= kRecovers)
    judge.Fail(locked ? "still locked" : "the focus is nowhere");
  if (locked) return;
  const auto* const list = OnView<QListWidget>("lstFirmware");
  const auto* const about = OnView<QPlainTextEdit>("txtFirmware");
  if (list == nullptr || list->selectedItems().isEmpty() || QApplication::mouseButtons() != Qt::NoButton)
    return;
  const QString name = list->selectedItems().front()->text();
  const QString text = about->toPlainText();
  const bool isB = text.contains(QLatin1String("Note of B"));
  if (isB != (name == QLatin1String("B.qal")))
    judge.Fail("the text of another package beside " + name.toStdString());
}

const Judge& Visit::Play() {
  app.Start();
  NextTick();
  while (!ended && judge.Faults().empty() &&
         !(hands.Resting() && within == 0 && Now() - busy > 3 * kRecovers)) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  CheckMemory();
  return judge;
}

void Visit::CheckMemory() {
  for (auto& [address, device] : mount.Devices()) {
    if (judge.Left().contains(address)) continue;
    const Image held = Held(address);
    const bool known =
        held == first[address] || held == Whole("A.qal", address) || held == Whole("B.qal", address);
    if (!known || !device.Complete() || device.State() == mount::RunState::Program)
      judge.Fail("device " + std::to_string(address) + " is not whole");
  }
}

/// The program waits in a box: the hands go on.
template <class Show>
auto Visit::Boxed(const std::string& text, bool question, Show&& show) {
  Tell(Now(), "box: " + text);
  judge.BoxOpens(text, question, Now());
  ++within;
  const bool before = std::exchange(looking, false);
  auto answer = show();
  looking = before;
  --within;
  busy = Now();
  return answer;
}

ui::Answer Visit::MessageBox(std::string_view text, ui::Buttons buttons, ui::Icon icon) {
  const ui::Answer answer = Boxed(std::string(text), buttons != ui::Buttons::Ok,
                                  [&] { return real.MessageBox(text, buttons, icon); });
  judge.BoxCloses(answer == ui::Answer::Yes);
  return answer;
}

std::string Visit::InputBox(std::string_view prompt, std::string_view title, std::string_view proposed) {
  return real.InputBox(prompt, title, proposed);
}

void Visit::PumpEvents() {
  const bool before = std::exchange(looking, true);
  lookedFrom = Top();
  hands.Deliver();
  real.PumpEvents();
  looking = before;
}

void Visit::PumpPainting() {
  const bool before = std::exchange(looking, true);
  lookedFrom = Top();
  real.PumpPainting();
  looking = before;
}

}  // namespace
}  // namespace tarnwick::test

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  std::map<std::string, std::uint32_t> options{{"--seed", 1}, {"--visits", 2000}};
  for (int i = 1; i + 1 < argc; i += 2) {
    options[argv[i]] = static_cast<std::uint32_t>(std::stoul(argv[i + 1]));
  }
  tarnwick::test::gTell = options["--tell"] != 0;
  int faults = 0, runs = 0, boxes = 0;
  for (std::uint32_t i = 0; i < options["--visits"]; ++i) {
    const std::uint32_t seed = options["--seed"] + i;
    tarnwick::test::Visit visit(seed);
    const tarnwick::test::Judge& judge = visit.Play();
    runs += judge.Runs();
    boxes += judge.Boxes();
    for (const std::string& fault : judge.Faults()) std::cout << "seed " << seed << ": " << fault << "\n";
    faults += judge.Faults().empty() ? 0 : 1;
  }
  std::cout << options["--visits"] << " visits, " << runs << " runs, " << boxes << " boxes, " << faults
            << " visits with a fault\n";
  const bool played = runs > 0 || options["--visits"] < 50;  // Hands that begin no run prove nothing.
  return faults == 0 && played ? 0 : 1;
}
