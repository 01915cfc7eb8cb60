// Leads a user's way through the real window: waits until it is at rest, plays the next scene, and
// answers the boxes that come up. Nothing of the program is called; it sees key and mouse events, or key
// events alone.
#pragma once

#include <QAbstractItemView>
#include <QMessageBox>
#include <QWidget>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>

namespace tarnwick::tour {

/// A box that is expected, by the beginning of its text, and how it is answered.
struct Cue {
  std::string begins;
  QMessageBox::StandardButton answer;
  std::string picture;                   ///< Name of its picture, without extension.
  std::function<void()> before = [] {};  ///< Runs before the answer.
};

/// What the user has at hand.
enum class Means { Mouse, Keyboard };

class Director final : public QObject {
 public:
  /// Pictures and "tour.txt" go to `folder`, which is there.
  Director(QWidget& frame, std::filesystem::path folder, Means means);

  void Scene(std::function<void()> play) { mScenes.push_back(std::move(play)); }
  /// Cues are used up in the order given.
  void Expect(Cue cue) { mCues.push_back(std::move(cue)); }

  /// Plays everything within the event loop. True when no check failed and every cue was used.
  bool Play();
  /// Ends the play: the program has ended.
  void Curtain();

  /// A picture of the window in front.
  void Picture(const std::string& name);
  /// True when there is a picture of that name. "run-half-done" and "web-downloading" are made when the
  /// first run and the first transfer are about half done.
  bool Pictured(const std::string& name) const { return mPictures.contains(name); }
  void Note(const std::string& line);
  /// Notes what was checked; one that does not hold fails the play.
  void Check(bool holds, const std::string& what);

  /// Throws: the play cannot go on.
  [[noreturn]] static void NotOnView(const char* name);
  /// A control on view, of the frame or of the page, by the name that the program knows it by.
  template <class Widget>
  Widget& Find(const char* name) {
    for (Widget* const found : mFrame.findChildren<Widget*>(QLatin1String(name))) {
      if (found->isVisible()) return *found;
    }
    NotOnView(name);
  }
  /// Presses the button: a click, or Tab until it has the focus and then the space bar.
  void Press(const char* button);
  /// Chooses the entry with that text in the first column: a click, or Tab until the list has the focus
  /// and then Up and Down.
  void Choose(const char* list, const QString& text);
  /// A key for whatever has the focus in the window in front.
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {});

 protected:
  /// Counts what the mouse does, and sees the progress painted.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Press(QWidget& button);
  /// Tab until `control` has the focus; a failed check when it never gets it.
  void TabTo(QWidget& control);
  void Tick();
  bool AnswerBox();
  void PictureHalfDone();
  bool AtRest() const;
  void PictureOf(QWidget& widget, const std::string& name);

  QWidget& mFrame;
  Means mMeans;
  std::filesystem::path mFolder;
  std::ofstream mProtocol;
  std::deque<std::function<void()>> mScenes;
  std::deque<Cue> mCues;
  QMessageBox* mBox = nullptr;  ///< The box on view that waits for its answer.
  int mQuietTicks = 0;
  int mTicksLeft = 0;
  std::set<std::string> mPictures;
  QString mHalfDone;  ///< The text of a run or transfer half done that was painted last.
  int mMouseEvents = 0;
  bool mFailed = false;
};

}  // namespace tarnwick::tour
