// One visit of the campaign: the whole program, and the hands, the judge and the mount round it.
#pragma once

#include <QObject>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>

#include "Hands.h"
#include "Images.h"
#include "Judge.h"
#include "app/App.h"
#include "mount/Mount.h"
#include "platform/clock.h"
#include "platform/help.h"
#include "platform/program.h"
#include "platform/qt/QtUser.h"
#include "support/CoreLink.h"
#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/VirtualLine.h"
#include "wizard/WizardWindow.h"

namespace tarnwick::test {

inline bool gTell = false;            ///< Each deed and box of the visit is told.
inline Milliseconds gBegin{1000000};  ///< When the next visit begins.

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
  /// Before the play: in the place of seeded hands, an accident of old, by its number: 1, 3 or 5. What comes of it
  /// is `runs` runs and `boxes` boxes.
  struct Accident {
    int number, runs, boxes;
  };
  static constexpr std::array<Accident, 3> kAccidents{{{1, 0, 0}, {3, 0, 0}, {5, 1, 1}}};
  void Replay(int number);

 private:
  /// Done once the window waits for its user on that page, with the hands at rest.
  struct Cue {
    int page;
    std::function<void()> act;
  };
  static void Prepare(const TempFolder& folder);
  /// When this visit begins: what was pressed in an earlier one is long ago.
  Milliseconds Begin() {
    line.now += gBegin;
    return Now();
  }
  Milliseconds Now() const { return std::chrono::duration_cast<Milliseconds>(line.now); }
  View See(QPoint place) const;
  QPoint Aim();
  QPoint PlaceOf(const char* name) const;
  void PlayCue();
  void LetDrop();
  void NextTick();
  void Tick();
  void RestAnswers();
  void CheckRest();
  void CheckMemory();
  QWidget* Top() const;
  template <class Widget>
  Widget* OnView(const char* name) const {
    for (Widget* const each :
         const_cast<Visit*>(this)->app.Window().findChildren<Widget*>(QLatin1String(name))) {
      if (each->isVisible()) return each;
    }
    return nullptr;
  }
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
  std::deque<Cue> cues;
  std::map<int, Image> first;  ///< What each device held when the visit began.
  int within = 0;              ///< Boxes that are up.
  bool webUp = false;
  QWidget* lookedFrom = nullptr;  ///< Who was in charge when the program pumped last.
  bool looking = false;           ///< The program pumps, or calls the link.
  bool ended = false;
  bool dragged = false;  ///< A package is being dragged here.
  Milliseconds busy{};  ///< When it last did something.
  Milliseconds answered{};
  Milliseconds rested{};  ///< When it was live last.
  program::Ending ending{[this] {
    ended = true;
    hands.Rest();
  }};
};

}  // namespace tarnwick::test
