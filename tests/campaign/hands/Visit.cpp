#include "Visit.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTimer>
#include <QUrl>
#include <array>
#include <iostream>
#include <utility>

#include "firmware/QALclass.h"
#include "platform/awake.h"
#include "support/ResetGlobals.h"
#include "wizard/modWizard.h"

namespace tarnwick::test {
namespace {

using namespace std::chrono_literals;

void Tell(Milliseconds now, const std::string& what) {
  if (gTell) std::cout << now.count() << " " << what << std::endl;
}

constexpr Milliseconds kTick = 10ms;
constexpr Milliseconds kRecovers = 1000ms;

}  // namespace

void Visit::Prepare(const TempFolder& folder) {
  ResetGlobals();
  gController = nullptr;
  program::Set({folder.Path(), "Tarnwick", 2, 2, 4});
  std::filesystem::create_directory(folder / "ports");
  std::filesystem::create_symlink("/dev/null", folder / "ports/COM5");
  std::filesystem::create_directory(folder / "MotorControllers");
  for (const std::string& name : kPackages) WriteFile(folder / "MotorControllers" / name, Content(name));
  std::filesystem::create_directory(folder / "elsewhere");
  for (const std::string name : {"A.qal", "D.qal"}) WriteFile(folder / "elsewhere" / name, Content(name));
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
    constexpr std::array kNames{"key down ", "key up ", "mouse down ", "mouse up ", "wheel ", "close ", "drop "};
    Tell(deed.at, kNames[static_cast<std::size_t>(deed.kind)] +
                      QKeySequence(deed.key | static_cast<int>(deed.modifiers)).toString().toStdString() +
                      (deed.repeat ? " again" : "") + " on " + view.pointed + ", focus " + view.focus +
                      (view.live ? ", live" : ""));
    dragged = dragged || deed.kind == Deed::Kind::Drop;
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

/// A package that is dragged over the window is let go once the pointer says that it is taken. The window system
/// tells of it also where the program asks for no input.
void Visit::LetDrop() {
  auto* const list = OnView<QListWidget>("lstFirmware");
  if (!dragged || list == nullptr) return;
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(
      QString::fromStdString(folder / (dice() % 2 == 0 ? "elsewhere/A.qal" : "elsewhere/D.qal")))});
  QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
  enter.ignore();
  QCoreApplication::sendEvent(list->parentWidget(), &enter);
  if (!enter.isAccepted() || dice() % 2 == 0) return;
  dragged = false;
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
  QCoreApplication::sendEvent(list->parentWidget(), &drop);
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
  // A compositor without a keyboard gives it to nobody.
  if (QApplication::activeWindow() != Top()) QApplication::setActiveWindow(Top());
  if (hands.Resting()) RestAnswers();
  LetDrop();
  PlayCue();
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
  LetDrop();
  hands.Deliver();
  real.PumpEvents();
  looking = before;
}

void Visit::PumpPainting() {
  const bool before = std::exchange(looking, true);
  lookedFrom = Top();
  LetDrop();
  real.PumpPainting();
  looking = before;
}

}  // namespace tarnwick::test
